#include "tools/facts/run_checks.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace sensorvela::tools {
namespace {

constexpr std::size_t kBacklogAtoms = 1000;
constexpr std::chrono::seconds kSlowAnswer{1};
/// A cycle, and ten minutes for whatever holds its end up.
constexpr std::chrono::minutes kDiagnosticsAfter{6 * 60 + 10};

FindingKind KindOf(DropReason reason) {
  switch (reason) {
    case DropReason::kRefused:
      return FindingKind::kDroppedRefused;
    case DropReason::kLookupFailed:
      return FindingKind::kDroppedLookupFailed;
    case DropReason::kRefusedOrFailed:
      return FindingKind::kDroppedRefusedOrFailed;
    case DropReason::kStillQueued:
      return FindingKind::kStillQueued;
  }
}

}  // namespace

void RunChecks::EngineStarts(const Moment& moment, bool has_supplier) {
  if (has_supplier) start_with_supplier_ = moment;
}

void RunChecks::Queued(const Moment& moment, std::size_t queue_length, bool is_diagnostics) {
  has_diagnostics_ = has_diagnostics_ || is_diagnostics;
  if (queue_length <= kBacklogAtoms) return;
  findings_.Raise(FindingKind::kBacklog, std::nullopt, moment, queue_length);
}

void RunChecks::Reported(const Moment& moment, testkit::Answer answer) {
  if (answer == testkit::Answer::kOk) return;
  findings_.Add(answer == testkit::Answer::kError ? FindingKind::kReportFailed
                                                  : FindingKind::kReportWithoutStatus,
                std::nullopt, moment);
}

void RunChecks::LookupEnds(const Moment& moment) {
  const std::optional<Moment> awaited = std::exchange(process_awaited_, std::nullopt);
  if (awaited && moment.AwakeSince(*awaited) > kSlowAnswer) {
    findings_.Add(FindingKind::kProcessSlow, std::nullopt, *awaited);
  }
}

void RunChecks::Dropped(const Moment& moment, DropReason reason) {
  ++drops_;
  if (!first_drop_) first_drop_ = moment;
  // A trace may end before its engine does: then nobody knows what became of the queue.
  if (reason == DropReason::kStillQueued && !is_destroyed_) return;
  findings_.Add(KindOf(reason), std::nullopt, moment);
}

void RunChecks::Blocked(const Moment& moment, const Cause& cause) {
  findings_.Add(FindingKind::kErrorStorm, cause.sensor(), moment);
}

void RunChecks::SupplierAnswered(const Moment& moment) {
  if (asked_ && moment.AwakeSince(*asked_) > kSlowAnswer) {
    findings_.Add(FindingKind::kSupplierSlow, std::nullopt, moment);
  }
  asked_ = moment;  // The engine asks for the next item at once.
}

void RunChecks::EngineDestroyed(const Moment& moment, bool is_service_away, std::size_t unsent) {
  is_destroyed_ = true;
  if (!is_service_away || !is_service_found_) return;
  findings_.Add(FindingKind::kDestroyedInOutage, std::nullopt, moment, unsent);
}

void RunChecks::End(const Moment& moment) {
  if (!is_service_found_ && first_drop_) {
    findings_.Add(FindingKind::kServiceNeverFound, std::nullopt, *first_drop_, drops_);
  }
  if (!start_with_supplier_ || has_diagnostics_) return;
  const auto awake = moment.AwakeSince(*start_with_supplier_);
  if (awake < kDiagnosticsAfter) return;
  const auto hours = std::chrono::duration_cast<std::chrono::hours>(awake).count();
  findings_.Add(FindingKind::kDiagnosticsMissing, std::nullopt, *start_with_supplier_,
                static_cast<std::uint64_t>(hours));
}

}  // namespace sensorvela::tools
