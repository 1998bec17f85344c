// Parses one line of a trace, a JSON object.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/trace/json_value.h"

namespace sensorvela::tools {

/// Keeps its memory from line to line.
class JsonLine {
 public:
  /// The object in `line`, in which no object has two fields of the same name. It is valid until
  /// the next call. Throws `EventError` if the line is anything else.
  const JsonValue& Parse(std::string_view line);

 private:
  class Parser;

  std::vector<JsonValue> values_;
  /// What `values_` refers to. Has room for all of a line's texts, so that they stay where they
  /// are.
  std::string texts_;
};

}  // namespace sensorvela::tools
