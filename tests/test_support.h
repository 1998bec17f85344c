// What the tests share: a stats service that records, a supplier that can be scripted, an engine
// with its surroundings, and a way to hold a thread at a chosen place.
#pragma once

#include <aidl/android/frameworks/stats/IStats.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "engine/sensor_vela.h"
#include "platform/host/log_sink.h"
#include "platform/host/service_manager.h"
#include "platform/host/virtual_time.h"

namespace sensorvela::testing {

using aidl::android::frameworks::stats::IStats;
using aidl::android::frameworks::stats::VendorAtom;
using namespace std::chrono_literals;

inline const std::string kInstance = "android.frameworks.stats.IStats/default";

/// An atom in one line, to the bit: identifier, domain if any, then each value after a letter for
/// its kind.
std::string Show(const VendorAtom& atom);

/// An atom from outside the library that is known by its identifier alone.
VendorAtom Marker(int id);

/// Holds the thread that passes until it is opened.
class Gate {
 public:
  void Pass();
  void AwaitArrival();
  void Open();

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool arrived_ = false;
  bool open_ = false;
};

/// Keeps what it is sent; answers OK unless told otherwise.
class RecordingStats : public IStats {
 public:
  ndk::ScopedAStatus reportVendorAtom(const VendorAtom& atom) override;

  /// Every atom so far, as `Show` writes it.
  std::vector<std::string> shown() const;

  /// Called for each atom after it has been kept; set before the first one comes.
  std::function<ndk::ScopedAStatus(const VendorAtom&)> answer;

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> shown_;
};

/// Has nothing to report, and says when it is asked and when it dies.
class ScriptedSupplier : public SensorVela::SystemDiagnosticsSupplierV2 {
 public:
  ~ScriptedSupplier() override {
    if (on_destruction) on_destruction();
  }
  std::unique_ptr<SensorVela::ProcessorDiag> GetProcessorDiagnostics() override {
    if (on_upload) on_upload();
    return nullptr;
  }
  std::unique_ptr<SensorVela::QueueStress> GetQueueStressType1() override { return nullptr; }
  std::unique_ptr<SensorVela::QueueStress> GetQueueStressType2() override { return nullptr; }
  std::unique_ptr<SensorVela::QueueStress> GetQueueStressType3() override { return nullptr; }
  std::vector<SensorVela::IpcErrorRate> GetIpcErrorRates() override { return {}; }
  std::vector<SensorVela::MemoryPressure> GetMemoryPressures() override { return {}; }
  std::vector<SensorVela::SensorUsage> GetSensorUsages() override { return {}; }
  std::vector<SensorVela::GatingContext> GetGatingContexts() override { return {}; }
  std::unique_ptr<SensorVela::DramException> GetDramException() override { return nullptr; }
  std::unique_ptr<SensorVela::AadProxStats> GetAadProxStats() override { return nullptr; }

  std::function<void()> on_upload;
  std::function<void()> on_destruction;
};

/// An engine in virtual time, with a registered service and a log that is kept.
class EngineTest : public ::testing::Test {
 protected:
  EngineTest();
  ~EngineTest() override;

  /// Starts the engine; its supplier calls the two functions.
  void Start(std::function<void()> on_upload = {}, std::function<void()> on_destruction = {});

  /// Begins the engine's destruction on a thread of its own and returns, with that thread, once the
  /// engine has been told to stop.
  std::thread BeginStop();

  /// The atoms that `stats_` has received since the last call, once the engine is at rest.
  std::vector<std::string> Delivered();

  /// Log lines so far, each after a letter for its priority.
  std::vector<std::string> Lines();

  /// How many lines hold `text`.
  int CountLines(const std::string& text);

  host::VirtualTime time_;
  std::shared_ptr<RecordingStats> stats_ = std::make_shared<RecordingStats>();
  std::unique_ptr<SensorVela> engine_;

 private:
  std::mutex mutex_;
  std::vector<std::string> lines_;
  std::size_t delivered_ = 0;
  host::ScopedLogSink sink_;
};

}  // namespace sensorvela::testing

/// The tests' one look inside the engine.
class SensorVelaTestPeer {
 public:
  /// As if the sensor, which is known, had delivered so many samples, all late and in the last
  /// band.
  static void SetCounters(SensorVela& engine, SensorVela::SensorId sensor, std::uint32_t count);
};
