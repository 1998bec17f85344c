#include "tests/simulation/simulation_model.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "tests/simulation/expected_atom.h"

namespace sensorvela::testing {
namespace {

constexpr std::int64_t kSixHoursNs = 21'600'000'000'000;

std::int32_t Low(std::int64_t value) { return static_cast<std::int32_t>(value & 0xFFFFFFFF); }

std::int64_t Minus(std::int64_t a, std::int64_t b) {
  std::int64_t difference = 0;
  __builtin_sub_overflow(a, b, &difference);
  return difference;
}

}  // namespace

void Model::RunTo(std::int64_t instant_ns) {
  while (reporter_ == Reporter::kAsleep && deadline_ns_ + suspended_ns_ <= instant_ns) {
    now_ns_ = std::max(now_ns_, deadline_ns_ + suspended_ns_);
    WakeUp();
  }
  now_ns_ = std::max(now_ns_, instant_ns);
}

void Model::Refuse() {
  refused_ = true;
  ReleaseWaits();
}

void Model::Register() {
  registered_ = true;
  if (is_blocked()) ServiceAnswered(true);
}

void Model::ReleaseWaits() {
  if (is_blocked()) ServiceAnswered(false);
}

void Model::Create(SupplierKind supplier) {
  supplier_ = supplier;
  deadline_ns_ = monotonic_ns() + kSixHoursNs;
  if (!declared_) {
    Log('E', "IStats service is not registered.");
    Pump();
    return;
  }
  Log('I', "Waiting for IStats service to come up.");
  reporter_ = Reporter::kBlockedAtStart;
  if (!IsAwaited()) ServiceAnswered(IsFound());
}

void Model::Destroy(bool comes_up) {
  stopping_ = true;
  if (is_blocked()) {
    if (comes_up) registered_ = true;
    ServiceAnswered(comes_up);
  } else if (monotonic_ns() >= deadline_ns_) {
    EndCycle();
  }
  reporter_ = Reporter::kNone;
  stopping_ = false;
  queue_.clear();
  errors_.clear();
  status_.clear();
}

void Model::Enqueue(const VendorAtom& atom) {
  queue_.push_back(atom);
  if (reporter_ == Reporter::kAsleep) WakeUp();
}

void Model::WakeUp() {
  if (monotonic_ns() >= deadline_ns_) EndCycle();
  Pump();
}

/// Runs the reporter's loop from its beginning until the reporter sleeps or blocks.
void Model::Pump() {
  do {
    batch_ = std::exchange(queue_, {});
    if (IsAwaited()) {
      reporter_ = Reporter::kBlockedInDrain;
      return;
    }
    Deliver(IsFound());
  } while (GoesOn());
}

/// Called after a drain. Returns whether another drain follows before the reporter sleeps.
bool Model::GoesOn() {
  if (stopping_) return false;
  if (!queue_.empty()) return true;
  if (monotonic_ns() < deadline_ns_) {
    reporter_ = Reporter::kAsleep;
    return false;
  }
  EndCycle();
  return true;
}

void Model::ServiceAnswered(bool found) {
  if (reporter_ == Reporter::kBlockedAtStart) {
    found ? Log('I', "IStats service online.") : Log('E', "Failed to get IStats service.");
    if (!stopping_) Pump();
    return;
  }
  Deliver(found);
  if (GoesOn()) Pump();
}

void Model::Deliver(bool found) {
  if (!found) {
    Log('E', "Failed to get IStats service. Atoms are dropped.");
    return;
  }
  for (const VendorAtom& atom : batch_) {
    history.push_back(AtomText(atom));
    if (answers_.empty()) continue;
    const testkit::Answer answer = answers_.front();
    answers_.pop_front();
    if (answer != testkit::Answer::kOk) {
      Log('E', "Failed to report atom [id = " + std::to_string(atom.atomId) + "].");
    }
  }
}

void Model::EndCycle() {
  deadline_ns_ = monotonic_ns() + kSixHoursNs;
  errors_.clear();
  Upload();
}

void Model::Upload() {
  testkit::Diagnostics d = diagnostics_;
  if (supplier_ == SupplierKind::kNone) return;
  if (supplier_ == SupplierKind::kFirstGeneration) {  // It returns only these, and always.
    if (!d.processor) d.processor.emplace();
    for (auto& queue : d.queues) {
      if (!queue) queue.emplace();
    }
  }
  if (const auto& p = d.processor) {
    queue_.push_back(
        Atom(100028, Low(p->value_1), Low(p->value_2), Low(p->value_3), Low(p->value_4)));
  }
  for (int i = 0; i < 3; ++i) {
    const auto& q = d.queues[static_cast<std::size_t>(i)];
    if (!q) continue;
    queue_.push_back(Atom(100029, i + 1, Low(q->value_1), Low(q->value_2), q->value_3, q->value_4,
                          Low(q->value_5), Low(q->value_6)));
  }
  if (supplier_ == SupplierKind::kFirstGeneration) return;
  for (const auto& r : d.ipc_error_rates) AddInts(queue_.emplace_back(Atom(100069)), r);
  for (const auto& m : d.memory) UploadMemory(m);
  for (const auto& u : d.sensor_usages) AddInts(queue_.emplace_back(Atom(100107)), u);
  for (const auto& g : d.gating_contexts) AddInts(queue_.emplace_back(Atom(100109)), g);
  if (d.dram_exception) AddInts(queue_.emplace_back(Atom(100110)), *d.dram_exception);
  if (const auto& p = d.prox_stats) {
    VendorAtom& atom = queue_.emplace_back(Atom(100334));
    AddInts(atom, *p, 0, 8);
    AddFloats(atom, *p, 8, 14);
    AddInts(atom, *p, 14, 20);
  }
}

void Model::UploadMemory(const SensorVela::MemoryPressure& memory) {
  if (memory.kind != 1) {
    VendorAtom& atom = queue_.emplace_back(Atom(100070));
    AddInts(atom, memory, 0, 4);
    AddFloats(atom, memory, 4, 5);
    return;
  }
  std::uint64_t total = 0;
  for (const std::int32_t count : memory.bucket_allocation_count) {
    total += static_cast<std::uint32_t>(count);
  }
  VendorAtom& atom =
      queue_.emplace_back(Atom(100304, Low(static_cast<std::int64_t>(total)), memory.shared_value,
                               memory.serviceability_value_1, memory.serviceability_value_2));
  atom.values.push_back(ToList(memory.bucket_allocation_count));
  atom.values.push_back(ToList(memory.bucket_duration_ms));
}

void Model::CountError(bool hal, SensorVela::SensorId sensor, int enumerator, int code) {
  const int count = ++errors_[{hal, enumerator}];
  char line[160];
  if (count > 10) {
    std::snprintf(line, sizeof line,
                  "%s Error [%d] has occurred [%d] times in current cycle, upload blocked due to "
                  "cap [10] met.",
                  hal ? "HAL" : "Runtime", enumerator, count);
    Log('E', line);
    return;
  }
  std::snprintf(line, sizeof line, "Reporting %s [%d] %s [%d] on sensor [0x%08x].",
                hal ? "HAL call" : "runtime time error", enumerator, hal ? "error" : "code", code,
                sensor.high);
  Log('I', line);
  Enqueue(SensorAtom(hal ? 100024 : 100025, sensor, enumerator, code));
}

void Model::ReportHalSensorEnabled(SensorVela::SensorId sensor, std::int64_t period_ns) {
  VendorAtom atom = SensorAtom(100242, sensor, 2, period_ns, -1, -1);
  atom.values.push_back(ToList(std::vector<std::int32_t>()));
  Enqueue(atom);
  const float threshold = static_cast<float>(period_ns) * 1.1F;
  Status& status = status_[{sensor.high, sensor.low}] = {};
  status.enabled_ns = now_ns_;
  status.last_ns = now_ns_;
  status.threshold_ns = threshold >= 0x1p63F    ? INT64_MAX
                        : threshold <= -0x1p63F ? INT64_MIN
                                                : static_cast<std::int64_t>(threshold);
}

void Model::ReportHalSensorDisabled(SensorVela::SensorId sensor) {
  const Status& status = status_[{sensor.high, sensor.low}];
  VendorAtom atom =
      SensorAtom(100242, sensor, 1, std::int64_t{-1}, static_cast<std::int32_t>(status.samples),
                 static_cast<std::int32_t>(status.late));
  atom.values.push_back(ToList(status.bands));
  Enqueue(atom);
}

void Model::LogSensorLatency(SensorVela::SensorId sensor, std::int64_t timestamp_ns) {
  Status& status = status_[{sensor.high, sensor.low}];
  const std::int64_t latency_ns = Minus(now_ns_, timestamp_ns);
  ++status.bands[latency_ns <= 2'500'000    ? 0
                 : latency_ns <= 5'000'000  ? 1
                 : latency_ns <= 10'000'000 ? 2
                 : latency_ns <= 20'000'000 ? 3
                                            : 4];
  if (Minus(timestamp_ns, status.last_ns) > status.threshold_ns) ++status.late;
  status.last_ns = timestamp_ns;
  if (++status.samples == 1) {
    Enqueue(SensorAtom(100245, sensor, Minus(now_ns_, status.enabled_ns)));
  }
}

std::int64_t Model::LastInTime(SensorVela::SensorId sensor) {
  const Status& status = status_[{sensor.high, sensor.low}];
  std::int64_t sum = 0;
  __builtin_add_overflow(status.last_ns, status.threshold_ns, &sum);
  return sum;
}

}  // namespace sensorvela::testing
