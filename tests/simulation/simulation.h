// The simulation's command, and what can be observed of its runs.
#pragma once

#include <string>
#include <vector>

namespace sensorvela::testing {

class SimulationObserver {
 public:
  virtual ~SimulationObserver() = default;
  /// Whether the stats service may have a process of its own.
  virtual bool HasProcesses() { return true; }
  /// The run's next engine is about to be constructed.
  virtual void EngineStarts() {}
  /// What `World::TakeHistory` has returned after a step.
  virtual void Happened(const std::vector<std::string>& /*history*/) {}
  /// The run's world exists no more. Returns false if something is wrong with the run.
  virtual bool RunEnds() { return true; }
};

/// Parses the command line, runs the simulation, and returns the command's exit status.
int RunSimulation(int argc, char** argv, SimulationObserver& observer);

}  // namespace sensorvela::testing
