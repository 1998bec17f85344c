#include "tests/simulation/simulation_model.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "tests/simulation/expected_atom.h"

namespace sensorvela::testing {
namespace {

constexpr std::int64_t kSixHoursNs = 21'600'000'000'000;

std::int32_t Low(std::int64_t value) { return static_cast<std::int32_t>(value & 0xFFFFFFFF); }

/// What a report of the atom takes in the buffer of the service's process. Its domain name is
/// empty, and its values are numbers, lists of ints or texts of one byte a character.
std::int64_t BytesOf(const VendorAtom& atom) {
  std::int64_t bytes = 112;
  for (const Value& value : atom.values) {
    switch (value.getTag()) {
      case Value::longValue:
        bytes += 16;
        break;
      case Value::repeatedIntValue: {
        const auto& list = value.get<Value::repeatedIntValue>();
        bytes += 12 + (list ? 4 * std::ssize(*list) : 0);
        break;
      }
      case Value::stringValue:
        bytes += 12 + (2 * std::ssize(value.get<Value::stringValue>()) + 5) / 4 * 4;
        break;
      default:
        bytes += 12;
    }
  }
  return (bytes + 7) / 8 * 8;
}

std::int64_t Minus(std::int64_t a, std::int64_t b) {
  std::int64_t difference = 0;
  __builtin_sub_overflow(a, b, &difference);
  return difference;
}

}  // namespace

void Model::RunTo(std::int64_t instant_ns) {
  for (;;) {
    const bool rings = process_.busy && !process_.stopped;
    const bool wakes = reporter_ == Reporter::kAsleep;
    const bool is_process = rings && (!wakes || process_.done_ns <= deadline_ns_);
    if (!rings && !wakes) break;
    const std::int64_t next_ns = (is_process ? process_.done_ns : deadline_ns_) + suspended_ns_;
    if (next_ns > std::max(now_ns_, instant_ns)) break;
    now_ns_ = std::max(now_ns_, next_ns);
    is_process ? ProcessIsDone() : WakeUp();
  }
  now_ns_ = std::max(now_ns_, instant_ns);
}

void Model::Register() {
  declared_ = true;
  registered_ = Where::kInHost;
  if (is_blocked() && !awaits_process_) LookupEnds(true);
}

void Model::ReleaseWaits() {
  if (is_blocked()) LookupEnds(false);
}

void Model::RegisterProcess() {
  Die();
  process_.alive = true;
  declared_ = true;
  registered_ = Where::kInProcess;
  if (is_blocked() && !awaits_process_) LookupEnds(true);
}

void Model::Stop() {
  if (!process_.alive || process_.stopped) return;
  process_.stopped = true;
  process_.left_ns = process_.done_ns - monotonic_ns();
}

void Model::GoOn() {
  if (!process_.alive || !process_.stopped) return;
  process_.stopped = false;
  if (process_.busy) process_.done_ns = monotonic_ns() + process_.left_ns;
  ProcessWorks(monotonic_ns());
  if (!process_.busy) ProcessAnswers(true);
}

void Model::Die() {
  if (!process_.alive) return;
  for (const VendorAtom& atom : process_.buffer) history.push_back("lost " + AtomText(atom));
  process_ = {};
  ProcessAnswers(false);
}

std::int64_t Model::LongestText() const {
  std::int64_t room = 520'192 - process_.bytes;
  for (const auto* atoms : {&batch_, &queue_}) {
    for (const VendorAtom& atom : *atoms) room -= BytesOf(atom);
  }
  room = std::min<std::int64_t>(room, 500'000 - 8);
  // Without the atom around the text and the zero at its end, in whole words.
  return std::max<std::int64_t>((room / 8 * 8 - 124) / 4 * 2 - 1, 0);
}

/// It works on one atom at a time, and takes those for which it needs no time at once.
void Model::ProcessWorks(std::int64_t since_ns) {
  while (!process_.stopped && !process_.busy && !process_.buffer.empty()) {
    if (time_per_atom_ns_ == 0) {
      Take(process_.buffer.front());
    } else {
      process_.busy = true;
      process_.done_ns = since_ns + time_per_atom_ns_;
    }
  }
}

void Model::ProcessIsDone() {
  process_.busy = false;
  Take(process_.buffer.front());
  ProcessWorks(process_.done_ns);
  ProcessAnswers(true);
}

void Model::Take(const VendorAtom& atom) {
  history.push_back(AtomText(atom));
  if (!answers_.empty()) answers_.pop_front();  // Nobody hears it.
  process_.bytes -= BytesOf(atom);
  process_.buffer.pop_front();
}

void Model::ProcessAnswers(bool found) {
  if (is_blocked() && awaits_process_) LookupEnds(found);
}

void Model::Create(SupplierKind supplier) {
  supplier_ = supplier;
  deadline_ns_ = monotonic_ns() + kSixHoursNs;
  if (!declared_ || refused_) {
    Log('E', "IStats service is not registered.");
    Pump();
    return;
  }
  Log('I', "Waiting for IStats service to come up.");
  reporter_ = Reporter::kBlockedAtStart;
  LookUp();
}

void Model::Destroy(void (Model::*release)()) {
  stopping_ = true;
  if (is_blocked()) {
    (this->*release)();
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

/// The reporter's loop from its beginning.
void Model::Pump() {
  batch_ = std::exchange(queue_, {});
  reporter_ = Reporter::kBlockedInDrain;
  LookUp();
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

/// Goes on to what follows, unless it has to wait.
void Model::LookUp() {
  awaits_process_ = false;
  bool found = !refused_;
  if (found && registered_ == Where::kNowhere) return;
  if (found && registered_ == Where::kInProcess) {
    awaits_process_ = process_.stopped || process_.busy;
    if (awaits_process_) return;
    found = process_.alive;
    if (!found) registered_ = Where::kNowhere;  // It is found once more, dead.
  }
  LookupEnds(found);
}

void Model::LookupEnds(bool found) {
  // A lookup that waited for a process has found that one, whatever is registered now.
  const bool in_process = awaits_process_ || registered_ == Where::kInProcess;
  awaits_process_ = false;
  if (std::exchange(reporter_, Reporter::kBusy) == Reporter::kBlockedAtStart) {
    found ? Log('I', "IStats service online.") : Log('E', "Failed to get IStats service.");
    if (!stopping_) Pump();
    return;
  }
  if (!found) Log('E', "Failed to get IStats service. Atoms are dropped.");
  for (const VendorAtom& atom : batch_) {
    if (found) in_process ? ReportToProcess(atom) : ReportToHost(atom);
  }
  batch_.clear();
  if (GoesOn()) Pump();
}

void Model::ReportToHost(const VendorAtom& atom) {
  history.push_back(AtomText(atom));
  if (answers_.empty()) return;
  const testkit::Answer answer = answers_.front();
  answers_.pop_front();
  if (answer != testkit::Answer::kOk) LogFailure(atom);
}

void Model::ReportToProcess(const VendorAtom& atom) {
  const std::int64_t bytes = BytesOf(atom);
  if (bytes >= 500'000 || process_.bytes + bytes > 520'192) {
    LogFailure(atom);
    return;
  }
  process_.buffer.push_back(atom);
  process_.bytes += bytes;
  ProcessWorks(monotonic_ns());
}

void Model::LogFailure(const VendorAtom& atom) {
  Log('E', "Failed to report atom [id = " + std::to_string(atom.atomId) + "].");
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
