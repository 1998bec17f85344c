// Writes the Trace Event Format: what the usual viewers of traces open.
#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include <sensorvela/platform/simulated/virtual_time.h>

#include "tools/text/atom_json.h"

namespace sensorvela::replay {

/// A row of the viewer: a thread of a process, to the format.
struct Track {
  int process;
  int thread;
};

/// Writes a file event by event, one a line, and keeps none of them.
///
/// The events of a track, and the values of a counter, come in the order of time. Instants are
/// written to the nanosecond. A failed write shows in the stream's state.
class ViewerWriter {
 public:
  using Instant = simulated::VirtualTime::Instant;

  /// `out` outlives the writer.
  explicit ViewerWriter(std::ostream& out);

  void NameProcess(int process, std::string_view name);

  /// Viewers are asked to show tracks in the order of their threads.
  void NameTrack(Track track, std::string_view name);

  /// Something that lasted. Spans of a track lie apart or one within the other.
  void Span(Track track, Instant from, Instant to, std::string_view name, const Json& arguments);

  void Mark(Track track, Instant at, std::string_view category, std::string_view name,
            const Json& arguments);

  /// The counter has this value until its next one.
  void Counter(int process, Instant at, std::string_view name, std::uint64_t value);

  /// The end of the file. Nothing comes after it.
  void Finish();

 private:
  /// `times` are fields, ready to be written, and `others` has the rest.
  void Write(char phase, Track track, const std::string& times, const Json& others);

  std::ostream& out_;
  bool is_first_ = true;
};

}  // namespace sensorvela::replay
