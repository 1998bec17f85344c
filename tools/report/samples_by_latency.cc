#include "tools/report/samples_by_latency.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/facts/captions.h"
#include "tools/text/wrapped_text.h"

namespace sensorvela::tools {
namespace {

constexpr std::size_t kBarWidth = 50;
/// What a line has beside its bar.
constexpr std::size_t kLineWidth = 36;

constexpr std::size_t kNumbers = 7;

/// A row of the table, but for its label.
using Cells = std::array<std::string, kNumbers + kLatencyBands>;

/// Four significant digits, or all those before the point; "-" for no value.
std::string Short(std::optional<double> value) {
  if (!value) return "-";
  std::array<char, 32> text;
  std::snprintf(text.data(), text.size(), std::abs(*value) < 1000 ? "%.4g" : "%.0f", *value);
  return text.data();
}

std::optional<double> Ms(const LogHistogram& histogram, double share) {
  if (histogram.count() == 0) return std::nullopt;
  const std::int64_t ns = share < 1 ? histogram.Percentile(share) : histogram.greatest();
  return static_cast<double>(ns) / 1e6;
}

Cells Headings() {
  Cells cells = {"samples", "late", "Hz", "first", "median", "99 %", "greatest"};
  for (std::size_t i = 0; i < kLatencyBands; ++i) {
    cells[kNumbers + i] = (IsLastBand(i) ? ">" : "<=") + BandLimitMs(i);
  }
  return cells;
}

Cells CellsOf(const Arrivals& arrived) {
  Cells cells = {std::to_string(arrived.counts.samples),
                 std::to_string(arrived.counts.late),
                 Short(arrived.RateHz()),
                 Short(Ms(arrived.first_latency_ns, 0.5)),
                 Short(Ms(arrived.latency_ns, 0.5)),
                 Short(Ms(arrived.latency_ns, 0.99)),
                 Short(Ms(arrived.latency_ns, 1))};
  std::ranges::transform(Shares(arrived.counts.bands), cells.begin() + kNumbers,
                         [](const std::string& share) {
                           return share.substr(0, share.find(' ')) + (share.empty() ? "" : "%");
                         });
  return cells;
}

using Widths = std::array<std::size_t, kNumbers + kLatencyBands>;

/// Wide enough for every row.
Widths WidthsOf(const std::vector<Cells>& rows) {
  Widths widths = {};
  for (const Cells& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  return widths;
}

std::string Row(std::string line, const Cells& cells, const Widths& widths) {
  for (std::size_t i = 0; i < cells.size(); ++i) {
    line += std::string(2 + widths[i] - cells[i].size(), ' ') + cells[i];
  }
  return WithoutEnd(line) + '\n';
}

/// At least one mark for a band that is not empty.
std::string Bar(std::uint64_t count, std::uint64_t largest, std::size_t width) {
  if (count == 0) return "";
  const double marks =
      static_cast<double>(width) * static_cast<double>(count) / static_cast<double>(largest);
  return std::string(std::max<std::size_t>(1, static_cast<std::size_t>(std::lround(marks))), '#');
}

}  // namespace

std::string LatencyTable(const std::vector<SensorSummary>& sensors, const SensorNames& names,
                         std::size_t width) {
  std::vector<std::string> labels = {"Samples; times in ms"};
  std::vector<Cells> rows = {Headings()};
  for (const SensorSummary& sensor : sensors) {
    labels.push_back(names.Label(sensor.sensor));
    rows.push_back(CellsOf(sensor.arrived));
  }
  const Widths widths = WidthsOf(rows);
  std::size_t label_width = 0;
  for (const std::string& label : labels) label_width = std::max(label_width, Columns(label));
  const std::size_t cells_width = 2 * widths.size() + std::reduce(widths.begin(), widths.end());
  if (cells_width > width) return "";

  const bool has_own_lines = label_width + cells_width > width;
  std::string table;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const std::size_t padding = label_width - Columns(labels[i]);
    table += Row(labels[i] + (has_own_lines ? "\n" : std::string(padding, ' ')), rows[i], widths);
  }
  return table;
}

std::string LatencyBars(const SampleCounts& samples, std::size_t width) {
  const std::uint64_t largest = std::ranges::max(samples.bands);
  if (largest == 0) return "";
  const std::size_t bar_width =
      width == 0 ? kBarWidth
                 : std::clamp(std::max(width, kLineWidth) - kLineWidth, std::size_t{10}, kBarWidth);
  const auto shares = Shares(samples.bands);
  std::string lines;
  for (std::size_t i = 0; i < samples.bands.size(); ++i) {
    const std::uint64_t count = samples.bands[i];
    std::array<char, 120> line;
    std::snprintf(line.data(), line.size(), "  %-5s %3s ms |%-*s %10llu %8s",
                  IsLastBand(i) ? "over" : "up to", BandLimitMs(i).c_str(),
                  static_cast<int>(bar_width), Bar(count, largest, bar_width).c_str(),
                  static_cast<unsigned long long>(count), shares[i].c_str());
    lines += WithoutEnd(line.data()) + '\n';
  }
  return lines;
}

std::string ArrivalsText(const Arrivals& arrivals) {
  const LogHistogram& latency = arrivals.latency_ns;
  if (latency.count() == 0) return "";
  const std::string first = Short(Ms(arrivals.first_latency_ns, 0.5));
  return Short(arrivals.RateHz()) + " Hz, latency median " + Short(Ms(latency, 0.5)) +
         " ms, 99 % " + Short(Ms(latency, 0.99)) + " ms, greatest " + Short(Ms(latency, 1)) +
         " ms, first sample " + first + " ms";
}

std::string ReportsText(const SensorSummary& sensor) {
  const auto& reported = sensor.reported;
  std::string text = (reported ? std::to_string(reported->samples) : "-") + " reported, " +
                     (reported ? std::to_string(reported->late) : "-") + " late, " +
                     std::to_string(sensor.not_reported.Total()) + " not reported";
  std::string separator = ": ";
  for (const auto& [reason, samples] : ReasonsOf(sensor.not_reported)) {
    text += std::exchange(separator, ", ") + std::to_string(samples) + ' ' + reason;
  }
  return text;
}

}  // namespace sensorvela::tools
