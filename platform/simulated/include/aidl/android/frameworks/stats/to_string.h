// The text of any member of a published type. Internal to the stand-ins.
#pragma once

#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace sensorvela::simulated {

template <typename T>
std::string ToString(const T& value);
template <typename T>
std::string ToString(const std::vector<T>& list);

template <typename T>
std::string ToString(const std::optional<T>& value) {
  return value ? ToString(*value) : "(null)";
}

template <typename T>
std::string ToString(const std::vector<T>& list) {
  std::string text;
  // A list of bools has no bools to refer to.
  for (const auto& element : list) {
    text += (text.empty() ? "" : ", ") + ToString(static_cast<const T&>(element));
  }
  return '[' + text + ']';
}

template <typename T>
std::string ToString(const T& value) {
  if constexpr (std::is_same_v<T, bool>) {
    return value ? "true" : "false";
  } else if constexpr (std::is_same_v<T, std::string>) {
    return value;
  } else if constexpr (std::is_enum_v<T>) {
    return toString(value);
  } else if constexpr (std::is_arithmetic_v<T>) {
    return std::to_string(value);
  } else {
    return value.toString();
  }
}

}  // namespace sensorvela::simulated
