#include "tools/report/finding_text.h"

#include <string>
#include <string_view>

#include "tools/report/sensor_json.h"
#include "tools/text/clock_time.h"

namespace sensorvela::tools {

std::string FindingText(const Finding& finding, const SensorNames& names) {
  const FindingInfo& info = InfoOf(finding.kind);
  std::string text = info.name;
  if (finding.sensor) text += "  " + names.Label(*finding.sensor);
  const std::string_view counts = info.counts;  // A plural.
  text += "  " + std::to_string(finding.count) + ' ' +
          std::string(counts.substr(0, counts.size() - (finding.count == 1 ? 1 : 0)));
  if (!finding.detail.empty()) text += " (" + finding.detail + ')';
  text += ", first at " + ShortClockTime(finding.at);
  if (finding.line > 0) text += ", line " + std::to_string(finding.line);
  return text;
}

Json ToJson(const Finding& finding, const SensorNames& names) {
  const FindingInfo& info = InfoOf(finding.kind);
  Json json = {{"name", info.name}};
  if (finding.sensor) AddSensor(*finding.sensor, names, json);
  json.update({{"count", finding.count}, {"counts", info.counts}});
  if (finding.line > 0) json["trace_line"] = finding.line;
  if (!finding.detail.empty()) json["detail"] = finding.detail;
  json["explanation"] = info.explanation;
  return json;
}

}  // namespace sensorvela::tools
