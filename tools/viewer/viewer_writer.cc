#include "tools/viewer/viewer_writer.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <ostream>
#include <string>
#include <string_view>

namespace sensorvela::tools {
namespace {

/// The field `name` with the time in microseconds. The time is formatted from integers, because a
/// floating-point number cannot represent every nanosecond.
std::string TimeField(const char* name, simulated::VirtualTime::Instant time) {
  const long long ns = time.count();
  std::array<char, 48> field;
  std::snprintf(field.data(), field.size(), R"("%s":%lld.%03lld,)", name, ns / 1000, ns % 1000);
  return field.data();
}

}  // namespace

ViewerWriter::ViewerWriter(std::ostream& out) : out_(out) {
  out_ << R"({"displayTimeUnit":"ms","traceEvents":[)";
}

void ViewerWriter::NameProcess(int process, std::string_view name) {
  const Json named = {{"name", "process_name"}, {"args", {{"name", name}}}};
  Write('M', {process, 0}, "", named);
}

void ViewerWriter::NameTrack(Track track, std::string_view name) {
  Write('M', track, "", {{"name", "thread_name"}, {"args", {{"name", name}}}});
  Write('M', track, "", {{"name", "thread_sort_index"}, {"args", {{"sort_index", track.thread}}}});
}

void ViewerWriter::Span(Track track, Instant from, Instant to, std::string_view name,
                        const Json& arguments) {
  Write('X', track, TimeField("ts", from) + TimeField("dur", to - from),
        {{"cat", "span"}, {"name", name}, {"args", arguments}});
}

void ViewerWriter::Mark(Track track, Instant at, std::string_view category, std::string_view name,
                        const Json& arguments) {
  // The format has two letters for this event; every viewer supports the older one.
  Write('I', track, TimeField("ts", at),
        {{"s", "t"}, {"cat", category}, {"name", name}, {"args", arguments}});
}

void ViewerWriter::Counter(int process, Instant at, std::string_view name, std::uint64_t value) {
  Write('C', {process, 0}, TimeField("ts", at), {{"name", name}, {"args", {{"value", value}}}});
}

void ViewerWriter::Finish() { out_ << "\n]}\n"; }

void ViewerWriter::Write(char phase, Track track, const std::string& times, const Json& others) {
  out_ << (is_first_ ? "\n" : ",\n") << R"({"ph":")" << phase << R"(","pid":)" << track.process
       << R"(,"tid":)" << track.thread << ',' << times << Dump(others, true).substr(1);
  is_first_ = false;
}

}  // namespace sensorvela::tools
