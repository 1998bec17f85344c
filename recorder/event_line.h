// Writes one event of a trace as a line of JSON.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include <sensorvela/engine/sensor_vela.h>

namespace sensorvela::recorder {

/// A longer line is not recorded.
inline constexpr std::size_t kMaxLineBytes = 393'216;

/// Written here and not by a JSON library: the recorder lives in the host's process, must not
/// throw, and needs integers, a few floats and an atom's texts only.
class EventLine {
 public:
  EventLine(std::int64_t at_ns, std::string_view kind);

  // Fields of the event. Each returns the line.

  EventLine& Integer(std::string_view name, std::int64_t value);
  EventLine& Text(std::string_view name, std::string_view value);
  EventLine& Sensor(SensorVela::SensorId sensor);

  // Parts of a field that has more than one value.

  /// Begins a field; its value follows.
  EventLine& Name(std::string_view name);
  /// `open` and `close` are brackets. Commas between values are written by the values.
  EventLine& Open(char open);
  EventLine& Close(char close);
  EventLine& Value(std::int64_t value);
  EventLine& Value(std::int32_t value) { return Value(std::int64_t{value}); }
  EventLine& Value(float value);
  EventLine& Value(bool value);
  /// Bytes that are not UTF-8 are replaced.
  EventLine& Value(std::string_view value);
  /// As an array.
  EventLine& Value(std::span<const std::int32_t> values);

  /// The whole line, with its end. Of a line that is too long, some bytes more than are allowed.
  const std::string& Finish();

 private:
  bool IsTooLong() const { return text_.size() > kMaxLineBytes; }
  void Separate();

  std::string text_;
};

}  // namespace sensorvela::recorder
