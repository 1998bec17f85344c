#include "tools/text/names.h"

#include <android/log.h>

namespace sensorvela::replay {

using testkit::Answer;

std::string_view AnswerName(Answer answer) {
  switch (answer) {
    case Answer::kOk:
      return "ok";
    case Answer::kError:
      return "error";
    case Answer::kNoStatus:
      return "no_status";
  }
  return "?";
}

std::string SensorName(SensorVela::SensorId sensor) {
  return "sensor " + std::to_string(sensor.high) + '/' + std::to_string(sensor.low);
}

std::string_view PriorityLetter(int priority) {
  if (priority == ANDROID_LOG_INFO) return "I";
  if (priority == ANDROID_LOG_ERROR) return "E";
  return "?";
}

}  // namespace sensorvela::replay
