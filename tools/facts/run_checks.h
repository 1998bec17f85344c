// Looks for what is wrong with the service, the queue, the supplier and the engine's life.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include <sensorvela/testkit/stats_service.h>

#include "tools/facts/findings.h"
#include "tools/facts/run_observer.h"

namespace sensorvela::tools {

/// The calls are in the order of time. The moment of a lost atom is that of its loss, with the line
/// of what had it queued.
class RunChecks {
 public:
  /// `findings` must outlive the object.
  explicit RunChecks(Findings& findings) : findings_(findings) {}

  void EngineStarts(const Moment& moment, bool has_supplier);
  void ServiceFound() { is_service_found_ = true; }
  void Queued(const Moment& moment, std::size_t queue_length, bool is_diagnostics);
  void Reported(const Moment& moment, testkit::Answer answer);
  void DidNotFit(const Moment& moment) {
    findings_.Add(FindingKind::kDidNotFit, std::nullopt, moment);
  }
  void LostInBuffer(const Moment& moment) {
    findings_.Add(FindingKind::kLostInBuffer, std::nullopt, moment);
  }
  void LookupAwaitsProcess(const Moment& moment) { process_awaited_ = moment; }
  void LookupEnds(const Moment& moment);
  void Dropped(const Moment& moment, DropReason reason);
  void Blocked(const Moment& moment, const Cause& cause);
  /// The host of a recording has been asked for an item, or has answered.
  void SupplierAsked(const Moment& moment) { asked_ = moment; }
  void SupplierAnswered(const Moment& moment);
  /// The host destroys the engine, which has not sent so many atoms.
  void EngineDestroyed(const Moment& moment, bool is_service_away, std::size_t unsent);
  void End(const Moment& moment);

 private:
  Findings& findings_;
  /// None without a supplier.
  std::optional<Moment> start_with_supplier_;
  bool has_diagnostics_ = false;
  bool is_service_found_ = false;
  bool is_destroyed_ = false;
  std::optional<Moment> asked_;
  std::optional<Moment> process_awaited_;
  std::optional<Moment> first_drop_;
  std::uint64_t drops_ = 0;
};

}  // namespace sensorvela::tools
