// What a recording, as a whole, says about its run.
#pragma once

#include <cstdint>
#include <vector>

#include <sensorvela/testkit/stats_service.h>

namespace sensorvela::tools {

/// Known before the run begins, because some of it was recorded only after it had had an effect.
struct RecordingPlan {
  /// A lookup of the stats service.
  struct Lookup {
    bool found;
    /// The reports that had ended when it began.
    std::int64_t reports;
  };

  /// A report that did not succeed.
  struct Failure {
    /// Counted from 1.
    std::int64_t report;
    testkit::Answer answer;
  };

  /// The engine found the service declared when it started.
  bool service_declared = false;
  /// In the order in which they ended.
  std::vector<Lookup> lookups;
  /// In the order of the reports.
  std::vector<Failure> failures;
  std::int64_t cycles = 0;
  /// The answers of the supplier that can still come before the next cycle ends.
  int answers_left = 0;
  /// All reports that are known to have ended. There may have been more if the recording does not
  /// have the engine's end.
  std::int64_t reports = 0;
  bool has_end = false;
};

}  // namespace sensorvela::tools
