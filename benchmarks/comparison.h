// Measures things beside each other and prints the result as tables.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace sensorvela::benchmarks {

using Body = std::function<void(benchmark::State&)>;

/// What an operation costs beside its baseline, the unavoidable work written by hand.
struct Comparison {
  std::string table;
  std::string name;
  Body operation;
  Body baseline;
  /// The ratio to reach; 0 for a row that has none.
  double goal = 0;
  int threads = 1;
  /// The bodies say themselves how long they took.
  bool manual_time = false;
};

/// Measures both, in this process and run; the table shows the ratio of their medians.
void Add(const Comparison& comparison);

/// Measures one thing that has no baseline.
void Add(const std::string& table, const std::string& name, const Body& body);

/// Shows the counters that `body` sets, each a column of the table: medians over some runs.
void AddCounters(const std::string& table, const std::string& name, const Body& body);

/// Prints a table for each that was named, in the order in which they were.
class Tables : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

 private:
  void PrintFigures(const std::string& operation, const std::string& baseline, double goal) const;

  /// By name, what each repetition took and counted.
  std::map<std::string, std::vector<double>> times_ns_;
  std::map<std::string, std::map<std::string, std::vector<double>>> counters_;
};

}  // namespace sensorvela::benchmarks
