// Runs a scenario once for every order in which its threads' operations can take place.
//
// One thread runs at a time. Before each operation that other threads can notice (a lock, a wait, a
// plain access to memory that the run has allocated, a call of the platform, ...) the explorer
// decides which thread goes on: depth first, from the beginning for each schedule. Of the schedules
// that differ only in the order of operations that commute it completes one (sleep sets).
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace sensorvela::schedules {

inline constexpr int kMaxThreads = 7;

/// What a thread does next.
struct Operation {
  struct Use {
    const void* object;
    bool writes;
  };

  const char* name = nullptr;
  /// Operations commute unless they use a common object and one of them writes.
  std::array<Use, 4> uses = {};
  /// When the operation can take place; empty: always. Depends only on the objects used.
  std::function<bool()> ready = {};
  /// Takes place when no other thread, and no step of the environment, is ready.
  bool when_idle = false;
};

/// Something that is done by no thread. It takes place at any moment, `budget` times, while
/// `ready`.
struct EnvironmentStep {
  Operation operation;
  std::function<void()> action;
  int budget = 0;
};

// For the threads of a run.

/// The number of the thread that runs, or -1 outside of a run.
int CurrentThread();

/// Returns when it is the calling thread's turn to do this. Other threads can run before.
void Step(const Operation& operation);

/// Adds a thread and returns its number. It runs when its turn comes.
int AddThread(void* (*start)(void*), void* argument);

/// The operation that waits until the thread has ended.
Operation JoinOf(int thread);

/// While `branch` is false no decision is made: a thread goes on for as long as it can.
void Branch(bool branch);

/// Ends the run: it has shown a fault.
[[noreturn]] void Fail(const std::string& violation);

// For the program.

struct Scenario {
  const char* name;
  std::function<void()> body;
  /// What the runs must record: each of these in at least one schedule, and nothing else.
  std::set<std::string> outcomes;
};

struct Report {
  std::int64_t schedules = 0;
  /// Runs given up because each of their continuations commutes to a schedule already seen.
  std::int64_t redundant = 0;
  std::set<std::string> outcomes;
  std::string violation;
  /// One digit for each decision up to the violation: the thread, or `kMaxThreads` and more for a
  /// step of the environment.
  std::string choices;
};

/// What surrounds the threads of a run.
struct Environment {
  std::vector<EnvironmentStep> steps;
  /// Before each run.
  std::function<void()> reset;
  /// When another thread goes on; empty if nothing belongs to a thread.
  std::function<void(int from, int to)> switched = {};
  /// What the run has recorded.
  std::function<std::string()> outcome;
};

/// Runs all schedules of the scenario, up to the first violation. With `choices`, runs only that
/// schedule, goes on without a decision after the last choice, and prints each step.
Report Explore(const Scenario& scenario, Environment& environment,
               const std::optional<std::string>& choices);

}  // namespace sensorvela::schedules
