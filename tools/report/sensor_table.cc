#include "tools/report/sensor_table.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "tools/report/latency_bars.h"
#include "tools/text/wrapped_text.h"

namespace sensorvela::replay {
namespace {

std::string Right(const std::string& text, std::size_t width) {
  return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

std::string Row(std::string label, std::size_t label_width, const std::array<std::string, 8>& row) {
  constexpr std::array<std::size_t, 8> kWidths = {9, 9, 6, 7, 7, 7, 7, 7};
  label.append(label_width - Columns(label), ' ');
  for (std::size_t i = 0; i < row.size(); ++i) label += ' ' + Right(row[i], kWidths[i] - 1);
  return label.substr(0, label.find_last_not_of(' ') + 1);
}

}  // namespace

std::vector<std::string> SensorTable(const std::vector<SensorSummary>& sensors,
                                     const SensorNames& names) {
  std::size_t label_width = 0;
  for (const SensorSummary& sensor : sensors) {
    label_width = std::max(label_width, Columns(names.Label(sensor.sensor)));
  }
  std::vector<std::string> lines = {Row(
      "", label_width, {"samples", "unrep.", "late", "2.5 ms", "5 ms", "10 ms", "20 ms", "more"})};
  for (const SensorSummary& sensor : sensors) {
    const auto& bands = sensor.reported.bands;
    std::array<std::string, 8> row = {std::to_string(sensor.delivered),
                                      std::to_string(sensor.NotReported()),
                                      std::to_string(sensor.reported.late)};
    for (std::size_t i = 0; i < bands.size(); ++i) {
      const std::string share = Share(bands, i);
      row[3 + i] = share.substr(0, share.find(' ')) + (share.empty() ? "" : "%");
    }
    lines.push_back(Row(names.Label(sensor.sensor), label_width, row));
  }
  return lines;
}

}  // namespace sensorvela::replay
