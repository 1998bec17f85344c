// Writes the Trace Event Format, which the usual trace viewers open.
#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include <sensorvela/platform/simulated/virtual_time.h>

#include "tools/text/atom_json.h"

namespace sensorvela::tools {

/// A row of the viewer; in the format, a thread of a process.
struct Track {
  int process;
  int thread;
};

/// Writes each event to the file at once, one per line.
///
/// The events of a track, and the values of a counter, must be written in the order of time.
/// Instants have a precision of a nanosecond. A failed write sets the stream's state.
class ViewerWriter {
 public:
  using Instant = simulated::VirtualTime::Instant;

  /// `out` must outlive the writer.
  explicit ViewerWriter(std::ostream& out);

  void NameProcess(int process, std::string_view name);

  /// The file asks viewers to sort tracks by their thread numbers.
  void NameTrack(Track track, std::string_view name);

  /// A span of time. Two spans of a track must be disjoint, or one must contain the other.
  void Span(Track track, Instant from, Instant to, std::string_view name, const Json& arguments);

  void Mark(Track track, Instant at, std::string_view category, std::string_view name,
            const Json& arguments);

  /// The counter keeps this value until its next one.
  void Counter(int process, Instant at, std::string_view name, std::uint64_t value);

  /// Ends the file. Must be the last call.
  void Finish();

 private:
  /// `times` has fields that are already JSON text; `others` has the rest.
  void Write(char phase, Track track, const std::string& times, const Json& others);

  std::ostream& out_;
  bool is_first_ = true;
};

}  // namespace sensorvela::tools
