// Reads the lines of a log in the forms in which logcat and bug reports print them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace sensorvela::tools {

/// The time of a line, as the log writes it.
struct LogTime {
  std::string text;  // Empty if the form of the line has no time.
  /// Since an origin that is the same for all lines of one form: 1970, the device's start, or the
  /// year 2000 where the year is not written.
  std::int64_t ns = 0;
};

/// One line of a message. A value that the form of the line does not have is missing.
struct LogLine {
  LogTime time;
  std::optional<std::int32_t> pid;
  std::optional<std::int32_t> tid;
  char priority = ' ';
  std::string_view text;
};

/// Finds the lines of one tag in a log. The forms are logcat's `brief`, `tag`, `process`, `time`,
/// `threadtime` and `long`, with any of its modifiers of times, user identifiers and colours, and
/// each line may have another form.
class LogLines {
 public:
  explicit LogLines(std::string_view tag) : tag_(tag) {}

  /// Takes the log's next line, without its end. Returns a line of the tag, or nothing: in the form
  /// `long` the line after a header has the text. The result's text is valid until the next call,
  /// and as long as `line`.
  std::optional<LogLine> Read(std::string_view line);

  /// The next line is of another file or log: a message that was cut does not go on in it.
  void EndMessage();

 private:
  std::string_view tag_;
  std::string plain_;  // The last line that had colours, without them.
  /// In the form `long`, after a header: an empty line ends the message.
  bool in_long_message_ = false;
  std::optional<LogLine> long_header_;
};

}  // namespace sensorvela::tools
