// Writes the Trace Event Format, which the usual trace viewers open.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
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
  explicit ViewerWriter(std::ostream& out) : out_(out) {
    out_ << R"({"displayTimeUnit":"ms","traceEvents":[)";
  }

  void NameProcess(int process, std::string_view name) {
    const Json named = {{"name", "process_name"}, {"args", {{"name", name}}}};
    Write('M', {process, 0}, "", named);
  }

  /// The file asks viewers to sort tracks by their thread numbers.
  void NameTrack(Track track, std::string_view name) {
    Write('M', track, "", {{"name", "thread_name"}, {"args", {{"name", name}}}});
    Write('M', track, "",
          {{"name", "thread_sort_index"}, {"args", {{"sort_index", track.thread}}}});
  }

  /// A span of time. Two spans of a track must be disjoint, or one must contain the other.
  void Span(Track track, Instant from, Instant to, std::string_view name, const Json& arguments) {
    Write('X', track, TimeField("ts", from) + TimeField("dur", to - from),
          {{"cat", "span"}, {"name", name}, {"args", arguments}});
  }

  void Mark(Track track, Instant at, std::string_view category, std::string_view name,
            const Json& arguments) {
    // The format has two letters for this event; every viewer supports the older one.
    Write('I', track, TimeField("ts", at),
          {{"s", "t"}, {"cat", category}, {"name", name}, {"args", arguments}});
  }

  /// The counter keeps this value until its next one.
  void Counter(int process, Instant at, std::string_view name, std::uint64_t value) {
    Write('C', {process, 0}, TimeField("ts", at), {{"name", name}, {"args", {{"value", value}}}});
  }

  /// Ends the file. Must be the last call.
  void Finish() { out_ << "\n]}\n"; }

 private:
  /// The field `name` with the time in microseconds. The time is formatted from integers, because a
  /// floating-point number cannot represent every nanosecond.
  static std::string TimeField(const char* name, Instant time) {
    const long long ns = time.count();
    std::array<char, 48> field;
    std::snprintf(field.data(), field.size(), R"("%s":%lld.%03lld,)", name, ns / 1000, ns % 1000);
    return field.data();
  }

  /// `times` has fields that are already JSON text; `others` has the rest.
  void Write(char phase, Track track, const std::string& times, const Json& others) {
    out_ << (is_first_ ? "\n" : ",\n") << R"({"ph":")" << phase << R"(","pid":)" << track.process
         << R"(,"tid":)" << track.thread << ',' << times << Dump(others, true).substr(1);
    is_first_ = false;
  }

  std::ostream& out_;
  bool is_first_ = true;
};

}  // namespace sensorvela::tools
