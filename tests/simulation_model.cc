#include "tests/simulation_model.h"

#include <algorithm>
#include <cstdio>

namespace sensorvela::testing {
namespace {

constexpr std::int64_t kSixHoursNs = 21'600'000'000'000;

/// Values as `Show` writes them: each integer after `i`, or `l` for a long.
template <typename... Ints>
std::string Atom(int id, Ints... values) {
  std::string text = std::to_string(id);
  ((text += (sizeof(values) == 8 ? " l" : " i") + std::to_string(values)), ...);
  return text;
}

std::string SensorAtom(int id, SensorVela::SensorId sensor) {
  return Atom(id, static_cast<std::int32_t>(sensor.high), sensor.low);
}

std::string Low(std::int64_t value) {
  return " i" + std::to_string(static_cast<std::int32_t>(value & 0xFFFFFFFF));
}

template <typename List>
std::string ListText(const List& list) {
  std::string text = " [";
  for (const auto element : list) text += " " + std::to_string(element);
  return text + " ]";
}

std::int64_t Minus(std::int64_t a, std::int64_t b) {
  std::int64_t difference = 0;
  __builtin_sub_overflow(a, b, &difference);
  return difference;
}

}  // namespace

void Model::RunTo(std::int64_t instant_ns) {
  while (reporter_ == Reporter::kAsleep && deadline_ns_ <= instant_ns) {
    now_ns_ = std::max(now_ns_, deadline_ns_);
    WakeUp();
  }
  now_ns_ = std::max(now_ns_, instant_ns);
}

void Model::Undeclare() {
  declared_ = false;
  ReleaseWaits();
}

void Model::Register() {
  registered_ = true;
  ReleaseWaits();
}

void Model::ReleaseWaits() {
  if (is_blocked()) ServiceAnswered(registered_);
}

void Model::Create(Generation generation) {
  generation_ = generation;
  deadline_ns_ = now_ns_ + kSixHoursNs;
  if (!declared_) {
    Log('E', "IStats service is not registered.");
    Pump();
    return;
  }
  Log('I', "Waiting for IStats service to come up.");
  reporter_ = Reporter::kBlockedAtStart;
  if (registered_) ServiceAnswered(true);
}

void Model::Destroy(bool comes_up) {
  stopping_ = true;
  if (is_blocked()) {
    if (comes_up) registered_ = true;
    ServiceAnswered(comes_up);
  } else if (now_ns_ >= deadline_ns_) {
    EndCycle();
  }
  reporter_ = Reporter::kNone;
  stopping_ = false;
  queue_.clear();
  errors_.clear();
  status_.clear();
}

void Model::Enqueue(const std::string& atom) {
  queue_.push_back(atom);
  if (reporter_ == Reporter::kAsleep) WakeUp();
}

void Model::WakeUp() {
  if (now_ns_ >= deadline_ns_) EndCycle();
  Pump();
}

/// From the top of the reporter's loop to the next time that it sleeps or blocks.
void Model::Pump() {
  do {
    batch_ = std::exchange(queue_, {});
    if (declared_ && !registered_) {
      reporter_ = Reporter::kBlockedInDrain;
      return;
    }
    Deliver(registered_);
  } while (GoesOn());
}

/// After a drain: whether there is another one before the reporter sleeps.
bool Model::GoesOn() {
  if (stopping_) return false;
  if (!queue_.empty()) return true;
  if (now_ns_ < deadline_ns_) {
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
  for (const std::string& atom : batch_) {
    seen.push_back(atom);
    if (answers_.empty()) continue;
    const Answer answer = answers_.back();
    answers_.pop_back();
    if (answer != Answer::kOk) {
      Log('E', "Failed to report atom [id = " + std::to_string(std::stoi(atom)) + "].");
    }
  }
}

void Model::EndCycle() {
  deadline_ns_ = now_ns_ + kSixHoursNs;
  errors_.clear();
  Upload();
}

void Model::Upload() {
  Diagnostics d = diagnostics_;
  if (generation_ == Generation::kNone) return;
  if (generation_ == Generation::kFirst) {  // It has nothing else, and always these.
    if (!d.processor) d.processor.emplace();
    for (auto& queue : d.queues) {
      if (!queue) queue.emplace();
    }
  }
  if (const auto& p = d.processor) {
    queue_.push_back("100028" + Low(p->value_1) + Low(p->value_2) + Low(p->value_3) +
                     Low(p->value_4));
  }
  for (int i = 0; i < 3; ++i) {
    const auto& q = d.queues[static_cast<std::size_t>(i)];
    if (!q) continue;
    queue_.push_back(Atom(100029, i + 1) + Low(q->value_1) + Low(q->value_2) + Low(q->value_3) +
                     Low(q->value_4) + Low(q->value_5) + Low(q->value_6));
  }
  if (generation_ == Generation::kFirst) return;
  for (const auto& r : d.ipc) {
    queue_.push_back(Atom(100069, r.value_1, r.value_2, r.value_3, r.value_4));
  }
  for (const auto& m : d.memory) {
    if (m.kind == 1) {
      std::uint32_t total = 0;
      for (const std::int32_t count : m.bucket_allocation_count) {
        total =
            static_cast<std::uint32_t>(std::uint64_t{total} + static_cast<std::uint32_t>(count));
      }
      queue_.push_back(Atom(100304, static_cast<std::int32_t>(total), m.shared_value,
                            m.serviceability_value_1, m.serviceability_value_2) +
                       ListText(m.bucket_allocation_count) + ListText(m.bucket_duration_ms));
    } else {
      queue_.push_back(
          Atom(100070, m.shared_value, m.pressure_value_1, m.pressure_value_2, m.pressure_value_3) +
          " f" + ShowFloat(m.pressure_value_4));
    }
  }
  for (const auto& u : d.usages) {
    queue_.push_back(
        Atom(100107, u.value_1, u.value_2, u.value_3, u.value_4, u.value_5, u.value_6, u.value_7));
  }
  for (const auto& g : d.gating) {
    queue_.push_back(Atom(100109, g.value_1, g.value_2, g.value_3, g.value_4, g.value_5, g.value_6,
                          g.value_7, g.value_8, g.value_9));
  }
  if (const auto& x = d.dram) {
    queue_.push_back(Atom(100110, x->value_1, x->value_2, x->value_3, x->value_4, x->value_5));
  }
  if (const auto& p = d.prox) {
    std::string floats;
    for (const float value :
         {p->value_9, p->value_10, p->value_11, p->value_12, p->value_13, p->value_14}) {
      floats += " f" + ShowFloat(value);
    }
    const std::string rest =
        Atom(0, p->value_15, p->value_16, p->value_17, p->value_18, p->value_19, p->value_20);
    queue_.push_back(Atom(100334, p->value_1, p->value_2, p->value_3, p->value_4, p->value_5,
                          p->value_6, p->value_7, p->value_8) +
                     floats + rest.substr(1));
  }
}

void Model::Error(bool hal, SensorVela::SensorId sensor, std::int32_t enumerator,
                  std::int32_t code) {
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
  Enqueue(SensorAtom(hal ? 100024 : 100025, sensor) + Atom(0, enumerator, code).substr(1));
}

void Model::Enable(SensorVela::SensorId sensor, std::int64_t period_ns) {
  Enqueue(SensorAtom(100242, sensor) + " i2 l" + std::to_string(period_ns) + " i-1 i-1 [ ]");
  const float threshold = static_cast<float>(period_ns) * 1.1F;
  Status& status = status_[{sensor.high, sensor.low}] = {};
  status.enabled_ns = now_ns_;
  status.last_ns = now_ns_;
  status.threshold_ns = threshold >= 0x1p63F    ? INT64_MAX
                        : threshold <= -0x1p63F ? INT64_MIN
                                                : static_cast<std::int64_t>(threshold);
}

void Model::Disable(SensorVela::SensorId sensor) {
  const Status& status = status_[{sensor.high, sensor.low}];
  Enqueue(SensorAtom(100242, sensor) + " i1 l-1 i" + std::to_string(status.samples) + " i" +
          std::to_string(status.late) + ListText(status.bands));
}

void Model::Sample(SensorVela::SensorId sensor, std::int64_t timestamp_ns) {
  Status& status = status_[{sensor.high, sensor.low}];
  const std::int64_t latency_ns = Minus(now_ns_, timestamp_ns);
  ++status.bands[latency_ns <= 2'500'000    ? 0
                 : latency_ns <= 5'000'000  ? 1
                 : latency_ns <= 10'000'000 ? 2
                 : latency_ns <= 20'000'000 ? 3
                                            : 4];
  if (Minus(timestamp_ns, status.last_ns) > status.threshold_ns) ++status.late;
  status.last_ns = timestamp_ns;
  if (++status.samples == 1) FirstSample(sensor, Minus(now_ns_, status.enabled_ns));
}

void Model::FirstSample(SensorVela::SensorId sensor, std::int64_t latency_ns) {
  Enqueue(SensorAtom(100245, sensor) + " l" + std::to_string(latency_ns));
}

void Model::Prox(const SensorVela::TarnVelaProxEvent& e) {
  const auto f = [](float value) { return " f" + ShowFloat(value); };
  Enqueue(Atom(100133, e.int_0, e.int_1, e.int_2, e.int_3, e.int_4, e.int_5, e.int_6, e.int_7) +
          f(e.float_0) + f(e.float_1) + f(e.float_2) + f(e.float_3) +
          Atom(0, e.int_8, e.int_9).substr(1) + f(e.float_4) + f(e.float_5) + f(e.float_6));
}

void Model::HalLatency(std::int32_t operation, SensorVela::SensorId sensor,
                       std::int64_t latency_ns) {
  Enqueue(SensorAtom(100243, sensor) + Atom(0, operation, latency_ns).substr(1));
}

void Model::Firmware(std::int32_t subject, std::int32_t state, std::int32_t detail) {
  Enqueue(Atom(100244, subject, state, detail));
}

}  // namespace sensorvela::testing
