#include "tools/text/names.h"

#include <android/log.h>

#include <string>
#include <string_view>
#include <vector>

#include "tools/text/printable_text.h"

namespace sensorvela::tools {

void SensorNames::Set(SensorVela::SensorId sensor, std::string_view name) { names_[sensor] = name; }

std::string_view SensorNames::NameOf(SensorVela::SensorId sensor) const {
  const auto found = names_.find(sensor);
  return found == names_.end() ? std::string_view() : found->second;
}

std::vector<SensorVela::SensorId> SensorNames::Named(std::string_view name) const {
  std::vector<SensorVela::SensorId> sensors;
  for (const auto& [id, its_name] : names_) {
    if (its_name == name && !name.empty()) sensors.push_back(id);
  }
  return sensors;
}

std::string SensorNames::Label(SensorVela::SensorId sensor) const {
  const std::string id = std::to_string(sensor.high) + '/' + std::to_string(sensor.low);
  const std::string_view name = NameOf(sensor);
  return name.empty() ? "sensor " + id : Printable(name) + " (" + id + ')';
}

std::string_view AnswerName(testkit::Answer answer) {
  if (answer == testkit::Answer::kOk) return "ok";
  return answer == testkit::Answer::kError ? "error" : "no_status";
}

std::string_view PriorityLetter(int priority) {
  if (priority == ANDROID_LOG_INFO) return "I";
  if (priority == ANDROID_LOG_ERROR) return "E";
  return "?";
}

}  // namespace sensorvela::tools
