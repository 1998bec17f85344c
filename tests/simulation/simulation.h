// The simulation's command, and what can be observed of its lives.
#pragma once

#include <string>
#include <vector>

namespace sensorvela::testing {

class LifeObserver {
 public:
  virtual ~LifeObserver() = default;
  /// The life's next engine is about to be constructed.
  virtual void EngineStarts() {}
  /// What `World::TakeHistory` has returned after a step.
  virtual void Happened(const std::vector<std::string>& /*history*/) {}
  /// The life's world exists no more. Returns false if something is wrong with the life.
  virtual bool LifeEnds() { return true; }
};

/// Parses the command line, lives the lives, and returns the command's exit status.
int RunSimulation(int argc, char** argv, LifeObserver& observer);

}  // namespace sensorvela::testing
