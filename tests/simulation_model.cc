#include "tests/simulation_model.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
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

/// The 32-bit fields of a record, from one up to another, after a letter for their kind.
template <typename Record>
std::string Fields(const Record& record, std::size_t from = 0, std::size_t to = sizeof(Record) / 4,
                   char kind = 'i') {
  const auto words = std::bit_cast<std::array<std::int32_t, sizeof(Record) / 4>>(record);
  std::string text;
  for (std::size_t i = from; i < to; ++i) {
    text += std::string(" ") + kind +
            (kind == 'i' ? std::to_string(words[i]) : ShowFloat(std::bit_cast<float>(words[i])));
  }
  return text;
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
  for (const auto& r : d.ipc) queue_.push_back("100069" + Fields(r));
  for (const auto& m : d.memory) {
    if (m.kind != 1) {
      queue_.push_back("100070" + Fields(m, 0, 4) + Fields(m, 4, 5, 'f'));
      continue;
    }
    std::uint64_t total = 0;
    for (const std::int32_t count : m.bucket_allocation_count) {
      total += static_cast<std::uint32_t>(count);
    }
    queue_.push_back("100304" + Low(static_cast<std::int64_t>(total)) + Fields(m, 0, 1) +
                     Fields(m, 6, 8) + ListText(m.bucket_allocation_count) +
                     ListText(m.bucket_duration_ms));
  }
  for (const auto& u : d.usages) queue_.push_back("100107" + Fields(u));
  for (const auto& g : d.gating) queue_.push_back("100109" + Fields(g));
  if (d.dram) queue_.push_back("100110" + Fields(*d.dram));
  if (const auto& p = d.prox) {
    queue_.push_back("100334" + Fields(*p, 0, 8) + Fields(*p, 8, 14, 'f') + Fields(*p, 14, 20));
  }
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
  Enqueue(SensorAtom(hal ? 100024 : 100025, sensor) + Atom(0, enumerator, code).substr(1));
}

void Model::ReportHalSensorEnabled(SensorVela::SensorId sensor, std::int64_t period_ns) {
  Enqueue(SensorAtom(100242, sensor) + " i2 l" + std::to_string(period_ns) + " i-1 i-1 [ ]");
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
  Enqueue(SensorAtom(100242, sensor) + " i1 l-1 i" + std::to_string(status.samples) + " i" +
          std::to_string(status.late) + ListText(status.bands));
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
  if (++status.samples == 1) ReportFirstSample(sensor, Minus(now_ns_, status.enabled_ns));
}

void Model::ReportFirstSample(SensorVela::SensorId sensor, std::int64_t latency_ns) {
  Enqueue(SensorAtom(100245, sensor) + " l" + std::to_string(latency_ns));
}

void Model::LogSensorProxEvent(const SensorVela::TarnVelaProxEvent& event) {
  Enqueue("100133" + Fields(event, 0, 8) + Fields(event, 8, 12, 'f') + Fields(event, 12, 14) +
          Fields(event, 14, 17, 'f'));
}

void Model::ReportHalLatency(SensorVela::HalOperation operation, SensorVela::SensorId sensor,
                             std::int64_t latency_ns) {
  Enqueue(SensorAtom(100243, sensor) + Atom(0, static_cast<int>(operation), latency_ns).substr(1));
}

void Model::ReportFirmwareState(int subject, SensorVela::FirmwareState state, int detail) {
  Enqueue(Atom(100244, subject, static_cast<int>(state), detail));
}

std::int64_t Model::LastInTime(SensorVela::SensorId sensor) {
  const Status& status = status_[{sensor.high, sensor.low}];
  std::int64_t sum = 0;
  __builtin_add_overflow(status.last_ns, status.threshold_ns, &sum);
  return sum;
}

}  // namespace sensorvela::testing
