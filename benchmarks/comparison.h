// Compares operations with their baselines and prints the results as tables.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace sensorvela::benchmarks {

using Body = std::function<void(benchmark::State&)>;

/// An operation of the library, and its baseline: the unavoidable part of the same work, written by
/// hand.
struct Comparison {
  std::string table;
  std::string name;
  Body operation;
  Body baseline;
  /// The highest acceptable ratio; 0 if there is no goal.
  double goal = 0;
  int threads = 1;
  /// Both bodies set their iteration times themselves.
  bool manual_time = false;
};

/// Adds a row that shows the median times of both, measured in the same run, and their ratio.
void Add(const Comparison& comparison);

/// Adds a row for an operation that has no baseline.
void Add(const std::string& table, const std::string& name, const Body& body);

/// Adds a row with a column for each counter that `body` sets: its median over some runs.
void AddCounters(const std::string& table, const std::string& name, const Body& body);

/// Prints the tables in the order in which they were added.
class Tables : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

 private:
  void PrintFigures(const std::string& operation, const std::string& baseline, double goal) const;

  /// The times and counters of all repetitions, by benchmark name.
  std::map<std::string, std::vector<double>> times_ns_;
  std::map<std::string, std::map<std::string, std::vector<double>>> counters_;
};

}  // namespace sensorvela::benchmarks
