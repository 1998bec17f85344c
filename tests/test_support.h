// What the tests share: an engine's whole world in virtual time, suppliers that can be scripted,
// and a way to hold a thread at a chosen place.
#pragma once

#include <aidl/android/frameworks/stats/IStats.h>

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/log_sink.h>
#include <sensorvela/platform/simulated/service_manager.h>
#include <sensorvela/platform/simulated/virtual_time.h>
#include "tests/show_atom.h"

namespace sensorvela::testing {

using Texts = std::vector<std::string>;
using namespace std::chrono_literals;

inline const std::string kInstance = "android.frameworks.stats.IStats/default";

/// An atom from outside the library that is known by its identifier alone.
VendorAtom Marker(int id);

/// What a supplier answers; one of the first generation answers zeros where there is nothing.
struct Diagnostics {
  std::optional<SensorVela::ProcessorDiag> processor;
  std::array<std::optional<SensorVela::QueueStress>, 3> queues;
  std::vector<SensorVela::IpcErrorRate> ipc;
  std::vector<SensorVela::MemoryPressure> memory;
  std::vector<SensorVela::SensorUsage> usages;
  std::vector<SensorVela::GatingContext> gating;
  std::optional<SensorVela::DramException> dram;
  std::optional<SensorVela::AadProxStats> prox;
};

enum class Generation { kNone, kFirst, kSecond };

/// An engine's world. Nothing is declared or registered in the beginning.
class World {
 public:
  World();
  ~World();

  /// Starts the engine with a supplier that answers with `diagnostics`.
  void Start(Generation generation = Generation::kSecond);

  /// Registers a service that keeps what it is sent, and asks `answer` what to say to it.
  void Register();

  /// Begins the engine's destruction on a thread of its own and returns, with that thread, once the
  /// engine has been told to stop.
  std::thread BeginStop();

  /// All that the engine did since the last call, in order, once it is settled: log lines, each
  /// after a letter for its priority, and the atoms that reached a service, as `Show` writes them.
  Texts Seen();

  simulated::VirtualTime time;
  std::unique_ptr<SensorVela> engine;
  Diagnostics diagnostics;

  // Called on the reporter thread; to be set before it can be. Empty ones do nothing.
  std::function<ndk::ScopedAStatus(const VendorAtom&)> answer;
  std::function<void()> on_upload;
  std::function<void()> on_supplier_destroyed;

 private:
  class Service;
  class FirstSupplier;
  class SecondSupplier;

  void Keep(std::string text);

  std::mutex mutex_;
  Texts seen_;
  simulated::ScopedLogSink sink_;
};

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

/// Runs `body` with 0, 1, ... on that many threads at once.
template <typename Body>
void OnThreads(int count, Body body) {
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) threads.emplace_back(body, i);
  for (std::thread& thread : threads) thread.join();
}

}  // namespace sensorvela::testing

/// The tests' one look inside the engine.
class SensorVelaTestPeer {
 public:
  /// As if the sensor, which is known, had delivered so many samples, all late and in the last
  /// band.
  static void SetCounters(SensorVela& engine, SensorVela::SensorId sensor, std::uint32_t count);

  /// How many of the atoms queued so far the reporter thread has taken, when it is the only engine.
  static std::int64_t AtomsTaken(SensorVela& engine,
                                 const sensorvela::simulated::VirtualTime& time);
};
