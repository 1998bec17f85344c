// What can look wrong in a run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/virtual_time.h>

namespace sensorvela::tools {

/// In the order of the table in finding.cc: the most severe first.
enum class FindingKind : std::uint8_t {
  kWallClock,
  kMonotonicClock,
  kMicroseconds,
  kMilliseconds,
  kClockOffset,
  kTimestampsAhead,
  kTimestampsBack,
  kServiceNeverFound,
  kDroppedRefused,
  kDroppedLookupFailed,
  kDroppedRefusedOrFailed,
  kDestroyedInOutage,
  kStillQueued,
  kLostInBuffer,
  kDidNotFit,
  kReportFailed,
  kReportWithoutStatus,
  kProcessSlow,
  kBacklog,
  kNeverEnabled,
  kSampledWhileDisabled,
  kSampledBeforeStart,
  kReEnabled,
  kDisabledTwice,
  kDisabledNeverEnabled,
  kBadPeriod,
  kFirstSampleTwice,
  kSilent,
  kTooFast,
  kTooSlow,
  kErrorStorm,
  kSupplierSlow,
  kDiagnosticsMissing,
  kPeriodJumps,
  kRateJumps,
  kLatencyJumps,
};

/// A kind of finding. A new one needs an enumerator, an entry in the table in finding.cc, the place
/// that adds it, and a section with an example in docs/findings.md.
struct FindingInfo {
  FindingKind kind;
  /// As it is printed: "wall_clock".
  const char* name;
  /// What its count counts: "samples".
  const char* counts;
  /// When there is one.
  const char* threshold;
  /// What is wrong and what to do, in one sentence.
  const char* explanation;
};

/// In the order of `FindingKind`.
std::span<const FindingInfo> FindingKinds();

const FindingInfo& InfoOf(FindingKind kind);

struct Finding {
  FindingKind kind;
  /// None if it is not about a sensor.
  std::optional<SensorVela::SensorId> sensor;
  std::uint64_t count;
  /// The first time.
  simulated::VirtualTime::Instant at;
  /// The line of the event that happened then; 0 for the end of a cycle.
  std::size_t line;
  /// What else there is to say; may be empty.
  std::string detail = {};
};

}  // namespace sensorvela::tools
