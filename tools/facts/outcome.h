// What became of an atom.
#pragma once

#include <cstdint>
#include <string_view>

namespace sensorvela::tools {

enum class Outcome : std::uint8_t {
  kDelivered,
  /// Its report failed.
  kFailed,
  /// Its report ended without a status.
  kNoStatus,
  /// A lookup found no service for it.
  kDropped,
  /// It was still queued at the end of the run.
  kLeft,
};

/// How the stats service answered the report; empty for an atom that it never received.
inline std::string_view AnswerName(Outcome outcome) {
  switch (outcome) {
    case Outcome::kDelivered:
      return "ok";
    case Outcome::kFailed:
      return "error";
    case Outcome::kNoStatus:
      return "no_status";
    case Outcome::kDropped:
    case Outcome::kLeft:
      break;
  }
  return "";
}

}  // namespace sensorvela::tools
