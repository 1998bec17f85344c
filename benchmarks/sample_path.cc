// A sample of a known sensor: the most frequent operation.
#include <utils/SystemClock.h>

#include <array>
#include <barrier>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "benchmarks/baseline_queue.h"
#include "benchmarks/comparison.h"
#include "benchmarks/engine.h"
#include "benchmarks/tables.h"

namespace sensorvela::benchmarks {
namespace {

SensorVela::SensorId Sensor(std::uint32_t number) {
  return {0x10, static_cast<std::int32_t>(number)};
}

/// The order in which samples arrive from the sensors, unrelated to their order in memory.
class Sensors {
 public:
  Sensors(std::uint32_t count, int thread)
      : count_(count),
        step_(kPrime % count),
        next_(static_cast<std::uint32_t>(thread) * 7 % count) {}

  std::uint32_t Next() {
    next_ += step_;
    if (next_ >= count_) next_ -= count_;
    return next_;
  }

 private:
  /// Shares no factor with any number of sensors that is measured, so that all are visited.
  static constexpr std::uint32_t kPrime = 61'813;

  std::uint32_t count_;
  std::uint32_t step_;
  std::uint32_t next_;
};

/// Threads that deliver samples at once, each in its own order.
class Deliveries {
 public:
  Deliveries(std::uint32_t sensors, int threads)
      : samples_(sensors > 1'000 || threads > 1 ? 20'000 : 2'000) {
    for (int i = 0; i < threads; ++i) orders_.emplace_back(sensors, i);
  }

  /// The time from the first call of `sample` to the end of the last, divided by their number.
  template <typename Sample>
  double TimeOfOne(const Sample& sample) {
    if (orders_.size() == 1) {
      return MeanNs(samples_, [&, &order = orders_[0]] { sample(order.Next()); });
    }
    std::barrier together(static_cast<std::ptrdiff_t>(orders_.size()) + 1);
    std::vector<std::thread> threads;
    for (Sensors& order : orders_) {
      threads.emplace_back([&] {
        together.arrive_and_wait();
        for (int i = 0; i < samples_; ++i) sample(order.Next());
        together.arrive_and_wait();
      });
    }
    together.arrive_and_wait();
    const double ns = MeanNs(1, [&] { together.arrive_and_wait(); });
    for (std::thread& thread : threads) thread.join();
    return ns / samples_ / static_cast<double>(orders_.size());
  }

 private:
  int samples_;
  std::vector<Sensors> orders_;
};

MakeSlice Samples(std::uint32_t sensors, int threads) {
  return [=]() -> Slice {
    const std::shared_ptr<SensorVela> engine = StartEngine();
    for (std::uint32_t i = 0; i < sensors; ++i) {
      engine->ReportHalSensorEnabled(Sensor(i), 5'000'000);
      engine->LogSensorLatency(Sensor(i), 0);
    }
    return [=, deliveries = Deliveries(sensors, threads)]() mutable {
      const std::int64_t timestamp_ns = android::elapsedRealtimeNano();
      return deliveries.TimeOfOne(
          [&](std::uint32_t number) { engine->LogSensorLatency(Sensor(number), timestamp_ns); });
    };
  };
}

struct Status {
  std::array<std::uint32_t, 5> buckets{};
  std::uint32_t count = 0;
  std::uint32_t late_count = 0;
  std::int64_t threshold_ns = 5'500'000;
  std::int64_t enabled_ns = 0;
  std::int64_t last_ns = 0;
};

struct Table {
  std::mutex mutex;
  std::unordered_map<std::uint64_t, Status> status;
};

std::uint64_t Key(std::uint32_t number) { return std::uint64_t{0x10} << 32 | number; }

/// A lock, a lookup, a clock reading, and the updates of the status.
[[gnu::noinline]] void BaselineSample(Table& table, std::uint64_t key, std::int64_t timestamp_ns) {
  const std::lock_guard lock(table.mutex);
  Status& status = table.status.find(key)->second;
  const std::int64_t latency_ns = android::elapsedRealtimeNano() - timestamp_ns;
  ++status.buckets[latency_ns > 20'000'000   ? 4
                   : latency_ns > 10'000'000 ? 3
                   : latency_ns > 5'000'000  ? 2
                   : latency_ns > 2'500'000  ? 1
                                             : 0];
  ++status.count;
  if (timestamp_ns - status.last_ns > status.threshold_ns) ++status.late_count;
  status.last_ns = timestamp_ns;
}

MakeSlice BaselineSamples(std::uint32_t sensors, int threads) {
  return [=]() -> Slice {
    const auto table = std::make_shared<Table>();
    // An atom is allocated between two nodes of the table, as in the engine.
    std::vector<VendorAtom> between;
    for (std::uint32_t i = 0; i < sensors; ++i) {
      table->status[Key(i)] = {};
      between.push_back(BaselineAtom(7));
    }
    return [=, deliveries = Deliveries(sensors, threads)]() mutable {
      const std::int64_t timestamp_ns = android::elapsedRealtimeNano();
      return deliveries.TimeOfOne(
          [&](std::uint32_t number) { BaselineSample(*table, Key(number), timestamp_ns); });
    };
  };
}

void AddRow(const char* table, const std::string& name, std::uint32_t sensors, int threads,
            double goal) {
  Add({.table = table,
       .name = name,
       .operation = Samples(sensors, threads),
       .baseline = BaselineSamples(sensors, threads),
       .goal = goal,
       .threads = threads,
       .repetitions = sensors > 1'000 || threads > 1 ? 5 : 41});
}

}  // namespace

void AddSamplePath() {
  for (const int threads : {1, 2, 8}) {
    AddRow("A sample (LogSensorLatency)", "64 sensors, threads: " + std::to_string(threads), 64,
           threads, threads == 1 ? 1.05 : 1.10);
  }
  for (const std::uint32_t sensors : {1U, 10U, 100U, 1'000U, 10'000U, 100'000U}) {
    AddRow("A sample, by the number of sensors", std::to_string(sensors), sensors, 1, 0);
  }
}

}  // namespace sensorvela::benchmarks
