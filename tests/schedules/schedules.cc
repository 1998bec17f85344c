// Holds the engine to its guarantees in every schedule of small scenarios.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

#include "tests/schedules/explorer.h"
#include "tests/schedules/platform.h"
#include "tests/schedules/scenarios.h"

namespace {

using sensorvela::schedules::Report;
using sensorvela::schedules::Scenario;

/// Prints what the schedules have shown; false if one of them violates a rule.
bool IsCorrect(const Scenario& scenario, const Report& report) {
  std::printf("%-34s %6lld schedules, %6lld redundant, %2zu outcomes\n", scenario.name,
              static_cast<long long>(report.schedules), static_cast<long long>(report.redundant),
              report.outcomes.size());
  if (!report.violation.empty()) {
    std::printf("  VIOLATION: %s\n  again: --scenario %s --choices '%s'\n",
                report.violation.c_str(), scenario.name, report.choices.c_str());
    return false;
  }
  return true;
}

bool SawAllOutcomes(const Scenario& scenario, const Report& report) {
  return std::all_of(scenario.outcomes.begin(), scenario.outcomes.end(), [&](const auto& outcome) {
    const bool seen = report.outcomes.contains(outcome);
    if (!seen) std::printf("  NEVER SEEN: \"%s\"\n", outcome.c_str());
    return seen;
  });
}

}  // namespace

int main(int argc, char** argv) {
  std::string only;
  std::optional<std::string> choices;
  CLI::App app("Runs the engine through every schedule of each scenario.");
  app.add_option("--scenario", only, "only this one");
  app.add_option("--choices", choices, "only the schedule with these choices; prints its steps")
      ->needs("--scenario");
  CLI11_PARSE(app, argc, argv);

  int scenarios = 0;
  std::int64_t schedules = 0;
  for (const Scenario& scenario : sensorvela::schedules::AllScenarios()) {
    if (!only.empty() && only != scenario.name) continue;
    const Report report =
        Explore(scenario, sensorvela::schedules::Platform::Get().environment, choices);
    const bool correct = IsCorrect(scenario, report);
    if (choices) return correct ? 0 : 1;
    if (!correct || !SawAllOutcomes(scenario, report)) return 1;
    ++scenarios;
    schedules += report.schedules;
  }
  if (scenarios == 0) {
    std::fprintf(stderr, "no scenario is named '%s'\n", only.c_str());
    return 1;
  }
  std::printf("%d scenarios, %lld schedules, which are all of each\n", scenarios,
              static_cast<long long>(schedules));
  return 0;
}
