// What the tests share beyond the kit: refused threads, and access to the engine's private fields.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/testkit/atom_text.h>
#include <sensorvela/testkit/destroy_engine.h>
#include <sensorvela/testkit/world.h>

namespace sensorvela::testing {

using ::testing::ElementsAre;
using testkit::AtomText;
using testkit::DiagnosticsItem;
using testkit::SupplierKind;
using testkit::World;
using VendorAtom = World::VendorAtom;
using Texts = std::vector<std::string>;
using namespace std::chrono_literals;

/// An outside atom with nothing but an identifier.
VendorAtom Marker(int id);

/// The system refuses every new thread while this exists. What is allocated meanwhile may leak: the
/// library frees neither the supplier nor what the fields own of an engine whose thread was
/// refused.
class RefusedThreads {
 public:
  RefusedThreads();
  ~RefusedThreads();
  RefusedThreads(const RefusedThreads&) = delete;
  RefusedThreads& operator=(const RefusedThreads&) = delete;

 private:
  pthread_attr_t normal_;
};

}  // namespace sensorvela::testing

/// The tests' only access to the engine's private fields.
class SensorVelaTestPeer {
 public:
  /// Sets the counts as if the sensor, which must have a status, had delivered `count` samples, all
  /// late and in the last band.
  static void SetCounters(SensorVela& engine, SensorVela::SensorId sensor, std::uint32_t count);
};
