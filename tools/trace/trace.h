// Reads an event trace: JSON Lines, one event per line, in the order of time.
#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>

#include <sensorvela/platform/simulated/virtual_time.h>

#include "tools/input/input.h"
#include "tools/run/event.h"
#include "tools/trace/event_kinds.h"

namespace sensorvela::tools {

/// Says why a trace cannot be run, in one printable line: `FILE:LINE: what is wrong: what was
/// expected`.
class TraceError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A trace, plain or compressed by gzip, all of it checked. Its events are not kept: they are read
/// again when they are run.
class Trace {
 public:
  /// Called after each event with the number of the input's bytes read so far.
  using OnLine = std::function<void(std::uint64_t bytes)>;

  /// Reads and checks the whole of `input`, which came from the file `path`, or from standard input
  /// for "-". Skips blank lines. Throws `TraceError` at the first mistake.
  Trace(const std::string& path, Input input, const OnLine& on_line = nullptr);

  /// The trace's name in messages.
  const std::string& name() const { return name_; }

  bool is_recording() const { return plan_.is_recording; }

  /// The instant of the first event.
  simulated::VirtualTime::Instant run_begin() const { return plan_.run_begin; }

  /// The instant at which the run ends.
  simulated::VirtualTime::Instant run_end() const { return plan_.run_end; }

  /// The names that the whole trace gives its sensors.
  const SensorNames& sensor_names() const { return plan_.sensor_names; }

  /// Says where a recording was cut, because its process was killed or its disk was full, in one
  /// printable line; empty if the trace is whole. The run has what came before the cut.
  const std::string& cut() const { return cut_; }

  /// Reads the events once more, from the first to the last. The trace must outlive the
  /// source, which throws `TraceError` if the file has been changed since and is not a valid trace
  /// any more.
  ///
  /// Without `with_fields`, which takes time, the events do not have their own fields as data.
  EventSource Events(bool with_fields = true) const;

 private:
  std::string name_;
  Input input_;
  TracePlan plan_;
  std::string cut_;
};

/// Opens the file `path`, or standard input for "-". Throws `TraceError` when it cannot be read.
Input OpenTrace(const std::string& path);

}  // namespace sensorvela::tools
