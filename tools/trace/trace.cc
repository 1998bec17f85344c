#include "tools/trace/trace.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <system_error>
#include <utility>

#include "tools/text/printable_text.h"

namespace sensorvela::replay {
namespace {

using nlohmann::json;

std::string DisplayName(const std::string& path) {
  return path == "-" ? "<stdin>" : Printable(path);
}

[[noreturn]] void ThrowUnreadable(const std::string& path) {
  throw TraceError(DisplayName(path) + ": " + std::generic_category().message(errno) +
                   ": expected a readable file");
}

/// Rejects an object that has a field twice, which the JSON parser accepts.
class DuplicateFieldCheck {
 public:
  bool operator()(int /*depth*/, json::parse_event_t event, json& parsed) {
    if (event == json::parse_event_t::object_start) {
      open_objects_.emplace_back();
    } else if (event == json::parse_event_t::object_end) {
      open_objects_.pop_back();
    } else if (event == json::parse_event_t::key) {
      const auto& name = parsed.get_ref<const std::string&>();
      if (!open_objects_.back().insert(name).second) {
        throw EventError("duplicate field " + Quoted(name) + ": expected each field once");
      }
    }
    return true;
  }

 private:
  std::vector<std::set<std::string>> open_objects_;
};

json ParseLine(std::string_view line) {
  // The JSON parser passes over the one and takes the other for the line's end.
  if (line.starts_with("\xef\xbb\xbf")) {
    throw EventError("a byte order mark: expected one JSON object");
  }
  if (const std::size_t nul = line.find('\0'); nul != std::string_view::npos) {
    throw EventError("a NUL byte at column " + std::to_string(nul + 1) +
                     ": expected one JSON object");
  }
  try {
    json event = json::parse(line, DuplicateFieldCheck());
    if (event.is_object()) return event;
    throw EventError("a JSON value of type " + std::string(event.type_name()) +
                     ": expected an object");
  } catch (const json::parse_error& error) {
    throw EventError("malformed JSON at column " + std::to_string(error.byte) +
                     ": expected one JSON object");
  } catch (const json::out_of_range&) {
    throw EventError("a number far beyond 64 bits: expected no number of that size in any field");
  }
}

/// Turns lines into events. Keeps what the earlier lines determine for the next.
class TraceParser {
 public:
  Event Parse(std::size_t line_number, std::string_view line) {
    const json object = ParseLine(line);
    FieldReader fields(object);
    const std::string name = fields.Text("event");
    const EventKind& kind = FindEventKind(name);
    const auto at_ns = fields.Integer<std::int64_t>("at_ns", 0, kMaxTimeNs);
    EventContent content = kind.read(fields, context_);
    fields.RejectOtherFields();
    CheckTime(line_number, at_ns);
    awake_at_ns_ = at_ns + content.suspended_ns;
    CheckPlace(line_number, kind);
    context_.supplier = content.supplier.value_or(context_.supplier);
    run_end_ns_ = kind.place == Place::kLast
                      ? at_ns
                      : std::max({run_end_ns_, awake_at_ns_, at_ns + content.train_ns});
    return {std::chrono::nanoseconds(at_ns),
            kind.name,
            {line_number, line},
            std::move(content.action),
            std::chrono::nanoseconds(run_end_ns_)};
  }

  void CheckWhole() const {
    if (last_line_ == 0) throw EventError("the trace is empty: expected one event a line");
    if (engine_line_ == 0) throw EventError("the trace ends here: expected an engine_start in it");
  }

 private:
  void CheckTime(std::size_t line_number, std::int64_t at_ns) {
    if (at_ns < last_at_ns_) {
      throw EventError("time goes back from " + std::to_string(last_at_ns_) + " (line " +
                       std::to_string(last_line_) + ") to " + std::to_string(at_ns) +
                       ": expected no earlier instant");
    }
    if (at_ns < awake_at_ns_) {
      throw EventError("an event at " + std::to_string(at_ns) + ", while the device is suspended" +
                       " (line " + std::to_string(last_line_) + "): expected none before " +
                       std::to_string(awake_at_ns_));
    }
    last_at_ns_ = at_ns;
    last_line_ = line_number;
  }

  void CheckPlace(std::size_t line_number, const EventKind& kind) {
    const std::string name(kind.name);
    if (end_line_ != 0) {
      throw EventError(name + " after the end (line " + std::to_string(end_line_) +
                       "): expected end to be the last event");
    }
    if (kind.place == Place::kNeedsEngine && engine_line_ == 0) {
      throw EventError(name + " without an engine: expected an engine_start before it");
    }
    if (kind.place == Place::kStartsEngine) {
      if (engine_line_ != 0) {
        throw EventError("a second " + name + " (the first: line " + std::to_string(engine_line_) +
                         "): expected one");
      }
      engine_line_ = line_number;
    }
    if (kind.place == Place::kLast) end_line_ = line_number;
  }

  TraceContext context_;
  std::int64_t last_at_ns_ = 0;
  /// When the suspension ends that the last event began, or else the last event's instant.
  std::int64_t awake_at_ns_ = 0;
  std::int64_t run_end_ns_ = 0;
  // Line numbers; 0 while there is no such line.
  std::size_t last_line_ = 0;
  std::size_t engine_line_ = 0;
  std::size_t end_line_ = 0;
};

}  // namespace

std::string ReadInput(const std::string& path) {
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::unique_ptr<std::FILE, Close> opened;
  std::FILE* file = stdin;
  if (path != "-") {
    opened.reset(std::fopen(path.c_str(), "rb"));
    file = opened.get();
    if (file == nullptr) ThrowUnreadable(path);
  }

  std::string content;
  std::array<char, 65536> chunk;
  while (std::feof(file) == 0 && std::ferror(file) == 0) {
    const std::size_t size = std::fread(chunk.data(), 1, chunk.size(), file);
    content.append(chunk.data(), size);
  }
  if (std::ferror(file) != 0) ThrowUnreadable(path);
  return content;
}

std::vector<Event> ParseTrace(const std::string& path, std::string_view text,
                              const std::function<void(std::size_t bytes)>& on_line) {
  std::vector<Event> events;
  const std::size_t size = text.size();
  TraceParser parser;
  std::size_t line_number = 0;
  try {
    while (!text.empty()) {
      ++line_number;
      const std::size_t end = text.find('\n');
      const std::string_view line = text.substr(0, end);
      text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
      if (line.find_first_not_of(" \t\r") == std::string_view::npos) continue;
      events.push_back(parser.Parse(line_number, line));
      if (on_line) on_line(size - text.size());
    }
    if (events.empty()) line_number = 1;
    parser.CheckWhole();
  } catch (const EventError& error) {
    throw TraceError(DisplayName(path) + ":" + std::to_string(line_number) + ": " + error.what());
  }
  return events;
}

}  // namespace sensorvela::replay
