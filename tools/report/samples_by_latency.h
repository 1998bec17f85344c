// Shows sensors' samples by latency on a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/facts/run_observer.h"
#include "tools/text/names.h"

namespace sensorvela::tools {

/// A line of headings and one for each sensor, of its samples as they arrived: how many, the late
/// ones, the rate, the median latency of first samples, the median, the 99th percentile and the
/// greatest of all latencies, in milliseconds, and the shares by latency. What there is none of is
/// "-"; a share of 0 is empty.
/// A table that is wider than `width` has the labels on lines of their own; if even that is too
/// wide, there is none.
std::string LatencyTable(const std::vector<SensorSummary>& sensors, const SensorNames& names,
                         std::size_t width);

/// One line for each latency band of a sensor: its limit, a bar in proportion to the largest band,
/// the number of samples in it and their share. The lines fit `width` columns, if that is not 0 and
/// leaves the bars ten. Empty for a sensor without a sample.
std::string LatencyBars(const SampleCounts& samples, std::size_t width = 0);

/// "100 Hz, latency median 1.8 ms, 99 % 2.1 ms, greatest 26 ms, first sample 22.1 ms". Empty for a
/// sensor without a sample.
std::string ArrivalsText(const Arrivals& arrivals);

/// What the reports have of the sensor's samples, and why they do not have the others: "55185
/// reported, 15 late, 10788 not reported: 10788 sampled while not enabled".
std::string ReportsText(const SensorSummary& sensor);

}  // namespace sensorvela::tools
