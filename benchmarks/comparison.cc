#include "benchmarks/comparison.h"

#include <algorithm>
#include <cstdio>

namespace sensorvela::benchmarks {
namespace {

struct Row {
  std::string name;
  double goal;
};

struct Table {
  std::string title;
  std::vector<Row> rows;
};

std::vector<Table> tables;

void AddRow(const std::string& title, const Row& row) {
  if (tables.empty() || tables.back().title != title) tables.push_back({title, {}});
  tables.back().rows.push_back(row);
}

std::string FullName(const std::string& table, const std::string& row, const char* what) {
  return table + ": " + row + what;
}
constexpr char kBaseline[] = " (baseline)";

constexpr int kCounterRepetitions = 7;

benchmark::internal::Benchmark* Register(const std::string& name, const Body& body) {
  return benchmark::RegisterBenchmark(name.c_str(), body);
}

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace

void Add(const Comparison& comparison) {
  AddRow(comparison.table, {comparison.name, comparison.goal});
  for (auto* const it :
       {Register(FullName(comparison.table, comparison.name, ""), comparison.operation),
        Register(FullName(comparison.table, comparison.name, kBaseline), comparison.baseline)}) {
    it->Threads(comparison.threads);
    comparison.manual_time ? it->UseManualTime() : it->UseRealTime();
  }
}

void Add(const std::string& table, const std::string& name, const Body& body) {
  AddRow(table, {name, 0});
  Register(FullName(table, name, ""), body)->UseRealTime();
}

void AddCounters(const std::string& table, const std::string& name, const Body& body) {
  AddRow(table, {name, 0});
  Register(FullName(table, name, ""), body)->Iterations(1)->Repetitions(kCounterRepetitions);
}

bool Tables::ReportContext(const Context&) { return true; }

void Tables::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.run_type != Run::RT_Iteration) continue;
    times_ns_[run.run_name.function_name].push_back(run.GetAdjustedRealTime());
    for (const auto& [label, counter] : run.counters) {
      counters_[run.run_name.function_name][label].push_back(counter.value);
    }
  }
}

void Tables::Finalize() {
  for (const auto& [title, rows] : tables) {
    bool has_title = false;
    for (const auto& [name, goal] : rows) {
      const std::string operation = FullName(title, name, "");
      if (!times_ns_.contains(operation)) continue;  // Filtered out.
      if (!has_title) std::printf("\n%s\n", title.c_str());
      has_title = true;
      std::printf("  %-56s", name.c_str());
      PrintFigures(operation, FullName(title, name, kBaseline), goal);
    }
  }
}

void Tables::PrintFigures(const std::string& operation, const std::string& baseline,
                          double goal) const {
  const double operation_ns = Median(times_ns_.at(operation));
  const auto baseline_times_ns = times_ns_.find(baseline);
  if (const auto counters = counters_.find(operation); counters != counters_.end()) {
    for (const auto& [label, values] : counters->second) {
      std::printf("  %s %10.0f", label.c_str(), Median(values));
    }
  } else if (baseline_times_ns == times_ns_.end()) {
    std::printf("%10.1f ns", operation_ns);
  } else {
    const double baseline_ns = Median(baseline_times_ns->second);
    const double ratio = operation_ns / baseline_ns;
    std::printf("%10.1f ns  baseline %10.1f ns  ratio %5.2f", operation_ns, baseline_ns, ratio);
    if (goal > 0) std::printf("  goal %.2f%s", goal, ratio > goal ? "  MISSED" : "");
  }
  std::printf("\n");
}

}  // namespace sensorvela::benchmarks
