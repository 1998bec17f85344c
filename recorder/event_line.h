// Writes one event of a trace as a line of JSON.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include <sensorvela/engine/sensor_vela.h>

namespace sensorvela::recorder {

/// Written here and not by a JSON library: the recorder lives in the host's process, must not
/// throw, and needs integers, a few floats and an atom's texts only.
class EventLine {
 public:
  EventLine(std::int64_t at_ns, std::string_view kind);

  // Fields of the event. Each returns the line.

  EventLine& Integer(std::string_view name, std::int64_t value);
  EventLine& Float(std::string_view name, float value);
  EventLine& Text(std::string_view name, std::string_view value);
  EventLine& Sensor(SensorVela::SensorId sensor);

  // Parts of a field that has more than one value.

  /// Begins a field; its value follows.
  EventLine& Name(std::string_view name);
  /// `open` and `close` are brackets. Commas between values are written by the values.
  EventLine& Open(char open);
  EventLine& Close(char close);
  EventLine& Value(std::int64_t value);
  EventLine& Value(float value);
  EventLine& Value(bool value);
  /// Bytes that are not UTF-8 are replaced.
  EventLine& Value(std::string_view value);

  /// An array of numbers, bools or texts.
  template <typename Values>
  EventLine& Array(const Values& values) {
    Open('[');
    for (const auto& value : values) Value(Widened(value));
    return Close(']');
  }

  /// The whole line, with its end.
  const std::string& Finish();

 private:
  static std::int64_t Widened(std::int64_t value) { return value; }
  static float Widened(float value) { return value; }
  static bool Widened(bool value) { return value; }
  static std::string_view Widened(const std::string& value) { return value; }
  static std::int64_t Widened(std::int32_t value) { return value; }
  static std::int64_t Widened(std::uint8_t value) { return value; }

  void Separate();

  std::string text_;
};

}  // namespace sensorvela::recorder
