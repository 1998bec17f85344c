#include "tools/report/sensor_table.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "tools/facts/captions.h"
#include "tools/text/wrapped_text.h"

namespace sensorvela::tools {
namespace {

std::string Right(const std::string& text, std::size_t width) {
  return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

using Cells = std::array<std::string, 3 + kLatencyBands>;

/// Wide enough for every row.
std::array<std::size_t, 3 + kLatencyBands> Widths(const std::vector<Cells>& rows) {
  std::array<std::size_t, 3 + kLatencyBands> widths = {};
  for (const Cells& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  return widths;
}

Cells Headings() {
  Cells cells = {"samples", "not reported", "late"};
  for (std::size_t i = 0; i < kLatencyBands; ++i) {
    cells[3 + i] = (IsLastBand(i) ? ">" : "<=") + BandLimitMs(i) + " ms";
  }
  return cells;
}

Cells CellsOf(const SensorSummary& sensor) {
  Cells cells = {std::to_string(sensor.arrived.samples), std::to_string(sensor.NotReported()),
                 std::to_string(sensor.reported.late)};
  for (std::size_t i = 0; i < sensor.reported.bands.size(); ++i) {
    const std::string share = Share(sensor.reported.bands, i);
    cells[3 + i] = share.substr(0, share.find(' ')) + (share.empty() ? "" : "%");
  }
  return cells;
}

std::string Row(std::string line, const Cells& cells,
                const std::array<std::size_t, 3 + kLatencyBands>& widths) {
  for (std::size_t i = 0; i < cells.size(); ++i) line += "  " + Right(cells[i], widths[i]);
  return line.substr(0, line.find_last_not_of(' ') + 1);
}

}  // namespace

std::vector<std::string> SensorTable(const std::vector<SensorSummary>& sensors,
                                     const SensorNames& names, std::size_t width) {
  std::vector<std::string> labels = {"Samples by latency"};
  std::vector<Cells> rows = {Headings()};
  for (const SensorSummary& sensor : sensors) {
    labels.push_back(names.Label(sensor.sensor));
    rows.push_back(CellsOf(sensor));
  }
  const auto widths = Widths(rows);
  std::size_t label_width = 0;
  for (const std::string& label : labels) label_width = std::max(label_width, Columns(label));
  const std::size_t cells_width = 2 * widths.size() + std::reduce(widths.begin(), widths.end());
  if (cells_width > width) return {};

  const bool has_own_lines = label_width + cells_width > width;
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    std::string start = labels[i];
    if (has_own_lines) {
      lines.push_back(std::exchange(start, ""));
    } else {
      start.append(label_width - Columns(start), ' ');
    }
    lines.push_back(Row(std::move(start), rows[i], widths));
  }
  return lines;
}

}  // namespace sensorvela::tools
