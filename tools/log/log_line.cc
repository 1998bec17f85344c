#include "tools/log/log_line.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace sensorvela::tools {
namespace {

constexpr std::int64_t kNsPerS = 1'000'000'000;
// The difference of two times fits in 64 bits.
constexpr std::int64_t kMaxSeconds = std::numeric_limits<std::int64_t>::max() / kNsPerS / 2 - 1;
constexpr std::size_t kMaxSecondsDigits = 19;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool BelongsToWord(char c) {
  return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

/// Reads a line from its start. What cannot be read is left as it is.
class Cursor {
 public:
  explicit Cursor(std::string_view rest) : rest_(rest) {}

  std::string_view rest() const { return rest_; }
  bool AtDigit() const { return !rest_.empty() && IsDigit(rest_.front()); }

  bool Skip(std::string_view expected) {
    if (!rest_.starts_with(expected)) return false;
    rest_.remove_prefix(expected.size());
    return true;
  }

  void SkipBlanks() {
    TakeWhile([](char c) { return c == ' '; });
  }

  std::string_view Word() { return TakeWhile(BelongsToWord); }
  std::string_view Digits() { return TakeWhile(IsDigit); }

  /// A number of two digits that is at most `max`.
  bool TwoDigits(unsigned max, unsigned& number) {
    if (rest_.size() < 2 || !IsDigit(rest_[0]) || !IsDigit(rest_[1])) return false;
    number = static_cast<unsigned>((rest_[0] - '0') * 10 + (rest_[1] - '0'));
    rest_.remove_prefix(2);
    return number <= max;
  }

  bool Priority(char& letter) {
    constexpr std::string_view kLetters = "VDIWEF";
    if (rest_.empty() || kLetters.find(rest_.front()) == std::string_view::npos) return false;
    letter = rest_.front();
    rest_.remove_prefix(1);
    return true;
  }

 private:
  template <typename Condition>
  std::string_view TakeWhile(Condition condition) {
    std::size_t size = 0;
    while (size < rest_.size() && condition(rest_[size])) ++size;
    const std::string_view taken = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return taken;
  }

  std::string_view rest_;
};

template <typename T>
std::optional<T> Number(std::string_view digits, T max) {
  T number = 0;
  const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  const bool is_whole = error == std::errc() && stop == digits.data() + digits.size();
  if (!is_whole || number < 0 || number > max) return std::nullopt;
  return number;
}

/// `[YYYY-]MM-DD hh:mm:ss`, in seconds.
std::optional<std::int64_t> CalendarSeconds(Cursor& c) {
  unsigned century = 20;
  unsigned year = 0;
  Cursor with_year = c;
  if (with_year.TwoDigits(99, century) && with_year.TwoDigits(99, year) && with_year.Skip("-")) {
    c = with_year;
  } else {
    century = 20;  // 2000 has a 29 February.
    year = 0;
  }
  unsigned month = 0;
  unsigned day = 0;
  unsigned hours = 0;
  unsigned minutes = 0;
  unsigned seconds = 0;
  if (!c.TwoDigits(12, month) || !c.Skip("-") || !c.TwoDigits(31, day) || !c.Skip(" ") ||
      !c.TwoDigits(23, hours) || !c.Skip(":") || !c.TwoDigits(59, minutes) || !c.Skip(":") ||
      !c.TwoDigits(60, seconds)) {
    return std::nullopt;
  }
  const std::chrono::year_month_day date(std::chrono::year(static_cast<int>(century * 100 + year)),
                                         std::chrono::month(month), std::chrono::day(day));
  if (!date.ok()) return std::nullopt;
  const std::int64_t days = std::chrono::sys_days(date).time_since_epoch().count();
  return ((days * 24 + hours) * 60 + minutes) * 60 + seconds;
}

/// ` +hhmm` or ` -hhmm`, in seconds; 0 if there is none.
std::int64_t ZoneSeconds(Cursor& c) {
  Cursor zone = c;
  const bool west = zone.Skip(" -");
  unsigned hours = 0;
  unsigned minutes = 0;
  if ((!west && !zone.Skip(" +")) || !zone.TwoDigits(14, hours) || !zone.TwoDigits(59, minutes)) {
    return 0;
  }
  c = zone;
  const std::int64_t seconds = hours * 3600 + minutes * 60;
  return west ? -seconds : seconds;
}

/// A date and a time, or seconds: of 1970 or of the device's start.
std::optional<LogTime> Time(Cursor& c) {
  Cursor time = c;
  time.SkipBlanks();
  const Cursor start = time;
  std::optional<std::int64_t> seconds = CalendarSeconds(time);
  const bool is_calendar = seconds.has_value();
  if (!is_calendar) {
    time = start;
    const std::string_view digits = time.Digits();
    if (digits.size() <= kMaxSecondsDigits) seconds = Number(digits, kMaxSeconds);
  }
  if (!seconds || !time.Skip(".")) return std::nullopt;
  const std::string_view fraction = time.Digits();
  if (fraction.size() != 3 && fraction.size() != 6 && fraction.size() != 9) return std::nullopt;
  std::int64_t ns = Number(fraction, kNsPerS).value_or(0);
  for (std::size_t digits = fraction.size(); digits < 9; ++digits) ns *= 10;
  if (is_calendar) *seconds -= ZoneSeconds(time);
  if (*seconds > kMaxSeconds || *seconds < -kMaxSeconds) return std::nullopt;
  c = time;
  const std::size_t size = start.rest().size() - c.rest().size();
  return LogTime{std::string(start.rest().substr(0, size)), *seconds * kNsPerS + ns};
}

/// `[user]process` or `[user]process thread`, whose parts follow `separator` or, if that is a
/// blank, are followed by no further number. The user is a number or a name.
bool Identifiers(Cursor& c, char separator, std::size_t count, LogLine& line) {
  std::array<std::string_view, 3> words;
  std::size_t size = 0;
  bool more = true;
  while (more && size <= count) {
    c.SkipBlanks();
    words[size++] = c.Word();
    Cursor next = c;
    next.SkipBlanks();
    more = separator == ' ' ? next.AtDigit() : c.Skip({&separator, 1});
  }
  if (more || size < count) return false;
  constexpr auto kMax = std::numeric_limits<std::int32_t>::max();
  line.pid = Number(words[size - count], kMax);
  if (count == 2) line.tid = Number(words[size - 1], kMax);
  return line.pid && (count == 1 || line.tid);
}

/// `I/tag: text` and `I/tag( pid): text`, after the slash.
bool TagFirst(Cursor c, std::string_view tag, LogLine& line) {
  if (!c.Skip(tag)) return false;
  if (c.Skip("(") && !(Identifiers(c, ':', 1, line) && c.Skip(")"))) return false;
  if (!c.Skip(": ")) return false;
  line.text = c.rest();
  return true;
}

/// `pid tid I tag: text`
bool ThreadFirst(Cursor c, std::string_view tag, LogLine& line) {
  if (!Identifiers(c, ' ', 2, line) || !c.Skip(" ") || !c.Priority(line.priority) || !c.Skip(" ") ||
      !c.Skip(tag) || !c.Skip(": ")) {
    return false;
  }
  line.text = c.rest();
  return true;
}

/// `I(pid) text  (tag)`, after the parenthesis.
bool TagLast(Cursor c, std::string_view tag, LogLine& line) {
  if (!Identifiers(c, ':', 1, line) || !c.Skip(") ")) return false;
  std::string_view text = c.rest();
  for (const std::string_view end : {std::string_view(")"), tag, std::string_view("  (")}) {
    if (!text.ends_with(end)) return false;
    text.remove_suffix(end.size());
  }
  line.text = text;
  return true;
}

std::optional<LogLine> OneLineForm(std::string_view text, std::string_view tag) {
  Cursor c(text);
  LogLine line;
  const std::optional<LogTime> time = Time(c);
  if (time) {
    line.time = *time;
    c.SkipBlanks();
    if (c.AtDigit() || !c.Priority(line.priority)) {
      return ThreadFirst(c, tag, line) ? std::optional(line) : std::nullopt;
    }
  } else if (!c.Priority(line.priority)) {
    return std::nullopt;
  }
  const bool found =
      c.Skip("/") ? TagFirst(c, tag, line) : !time && c.Skip("(") && TagLast(c, tag, line);
  return found ? std::optional(line) : std::nullopt;
}

constexpr std::string_view kColourStart = "\x1b[";

/// Leaves out what logcat's modifier `color` puts around a text, such as `ESC [ 38;5;40 m`.
std::string WithoutColours(std::string_view text) {
  std::string plain;
  while (!text.empty()) {
    const std::size_t start = std::min(text.find(kColourStart), text.size());
    plain += text.substr(0, start);
    text.remove_prefix(start);
    const std::size_t end = text.find_first_not_of("0123456789;", kColourStart.size());
    if (end != std::string_view::npos && text[end] == 'm') {
      text.remove_prefix(end + 1);
    } else if (!text.empty()) {
      plain += kColourStart;
      text.remove_prefix(kColourStart.size());
    }
  }
  return plain;
}

struct LongHeader {
  LogLine line;
  std::string_view tag;
};

/// `[ MM-DD hh:mm:ss.mmm pid: tid I/tag ]`
std::optional<LongHeader> ReadLongHeader(std::string_view text) {
  constexpr std::string_view kEnd = " ]";
  if (!text.starts_with("[ ") || !text.ends_with(kEnd)) return std::nullopt;
  Cursor c(text.substr(2));
  LongHeader header;
  std::optional<LogTime> time = Time(c);
  if (!time || !c.Skip(" ") || !Identifiers(c, ':', 2, header.line) || !c.Skip(" ") ||
      !c.Priority(header.line.priority) || !c.Skip("/") || c.rest().size() < kEnd.size()) {
    return std::nullopt;
  }
  header.line.time = std::move(*time);
  header.tag = c.rest().substr(0, c.rest().size() - kEnd.size());
  return header;
}

}  // namespace

std::optional<LogLine> LogLines::Read(std::string_view line) {
  if (line.find(kColourStart) != std::string_view::npos) line = plain_ = WithoutColours(line);
  if (in_long_message_) {
    std::optional<LogLine> first_line;
    first_line.swap(long_header_);
    in_long_message_ = !line.empty();
    if (first_line) first_line->text = line;
    return first_line;
  }
  if (auto header = ReadLongHeader(line)) {
    in_long_message_ = true;
    if (header->tag == tag_) long_header_ = std::move(header->line);
    return std::nullopt;
  }
  if (line.find(tag_) == std::string_view::npos) return std::nullopt;
  return OneLineForm(line, tag_);
}

void LogLines::EndMessage() {
  in_long_message_ = false;
  long_header_.reset();
}

}  // namespace sensorvela::tools
