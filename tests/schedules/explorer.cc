#include "tests/schedules/explorer.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "tests/schedules/fiber.h"
#include "tests/schedules/memory.h"

namespace sensorvela::schedules {
namespace {

/// Threads, and after them the steps of the environment; one bit for each.
using Set = unsigned;
constexpr Set SetOf(int actor) { return 1U << actor; }
constexpr int kMostSteps = 20'000;

struct Thread {
  Fiber fiber;
  Operation next;
  void* (*start)(void*) = nullptr;
  void* argument = nullptr;
  bool ended = false;
};

/// A decision on the path to where the run is.
struct Decision {
  Set ready = 0;
  Set asleep = 0;
  Set tried = 0;
  int chosen = 0;
};

struct Run {
  Environment* environment = nullptr;
  Fiber explorer;
  std::array<Thread, kMaxThreads> threads;
  int thread_count = 0;
  bool branching = true;
  bool printing = false;
  int steps = 0;
  /// Those whose next operation leads to schedules that have been run already.
  Set asleep = 0;
  std::vector<Decision> path;
  std::size_t depth = 0;
  bool redundant = false;
  std::string violation;
} run;

/// The thread that runs; set also while the program's other variables are being initialized.
constinit int current = -1;

Thread& ThreadOf(int actor) { return run.threads[static_cast<std::size_t>(actor)]; }
EnvironmentStep& EnvironmentStepOf(int actor) {
  return run.environment->steps[static_cast<std::size_t>(actor - kMaxThreads)];
}
const Operation& NextOf(int actor) {
  return actor < kMaxThreads ? ThreadOf(actor).next : EnvironmentStepOf(actor).operation;
}

bool Commute(const Operation& a, const Operation& b) {
  if (a.when_idle || b.when_idle) return false;
  for (const Operation::Use& one : a.uses) {
    for (const Operation::Use& other : b.uses) {
      if (one.object != nullptr && one.object == other.object && (one.writes || other.writes)) {
        return false;
      }
    }
  }
  return true;
}

Set Ready() {
  Set ready = 0;
  Set when_idle = 0;
  const int end = kMaxThreads + static_cast<int>(run.environment->steps.size());
  for (int actor = 0; actor < end; ++actor) {
    const bool exists = actor < kMaxThreads ? actor < run.thread_count && !ThreadOf(actor).ended
                                            : EnvironmentStepOf(actor).budget > 0;
    const Operation& next = NextOf(actor);
    if (!exists || (next.ready && !next.ready())) continue;
    (next.when_idle ? when_idle : ready) |= SetOf(actor);
  }
  return ready != 0 ? ready : when_idle;
}

/// The thread that runs, if it can go on, because that needs no switch.
int FirstOf(Set actors) {
  return (actors & SetOf(current)) != 0 ? current : std::countr_zero(actors);
}

[[noreturn]] void EndRun() {
  ThreadOf(current).fiber.SwitchTo(run.explorer);
  __builtin_unreachable();
}

int Decide(Set ready) {
  Set tried = 0;
  int chosen = FirstOf(ready);
  if (std::popcount(ready) > 1) {
    if (run.depth == run.path.size()) {
      const Set awake = ready & ~run.asleep;
      run.path.push_back({ready, run.asleep, 0, FirstOf(awake != 0 ? awake : ready)});
    }
    const Decision& decision = run.path[run.depth++];
    chosen = decision.chosen;
    tried = decision.tried;
    if ((ready & SetOf(chosen)) == 0) Fail("the choices are not of this scenario");
  }
  run.redundant = (run.asleep & SetOf(chosen)) != 0;
  if (run.redundant) EndRun();
  const Set before = run.asleep | tried;
  run.asleep = 0;
  for (int actor = 0; SetOf(actor) <= before; ++actor) {
    const bool stays = (before & SetOf(actor)) != 0 && Commute(NextOf(actor), NextOf(chosen));
    if (stays) run.asleep |= SetOf(actor);
  }
  return chosen;
}

/// Lets the environment take its steps until it is a thread's turn, and switches to that thread.
void GoOn() {
  int chosen = kMaxThreads;
  while (chosen >= kMaxThreads) {
    const CheckerMemory checker_memory;
    const Set ready = Ready();
    if (ready == 0) Fail("deadlock");
    if (++run.steps > kMostSteps) Fail("no end");
    chosen = run.branching ? Decide(ready) : FirstOf(ready);
    if (run.printing) std::printf("  %d %s\n", chosen, NextOf(chosen).name);
    if (chosen < kMaxThreads) break;
    EnvironmentStep& step = EnvironmentStepOf(chosen);
    --step.budget;
    step.action();
  }
  Thread& before = ThreadOf(current);
  if (chosen == current) return;
  if (run.environment->switched) run.environment->switched(current, chosen);
  current = chosen;
  before.fiber.SwitchTo(ThreadOf(chosen).fiber);
}

void RunThread() {
  Thread& thread = ThreadOf(current);
  thread.start(thread.argument);
  // The first thread ends last, so that whatever may happen in the environment has happened.
  Step({.name = "end", .uses = {{{&thread, true}}}, .when_idle = current == 0});
  Release(&thread);
  thread.ended = true;
  if (current == 0) EndRun();
  GoOn();
}

void RunOnce(const Scenario& scenario) {
  run.thread_count = 0;
  run.branching = true;
  run.steps = 0;
  run.asleep = 0;
  run.depth = 0;
  run.redundant = false;
  run.violation.clear();
  ResetMemory();
  run.environment->reset();
  const auto body = [](void* argument) -> void* {
    static_cast<const Scenario*>(argument)->body();
    return nullptr;
  };
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): the thread only reads it.
  AddThread(body, const_cast<Scenario*>(&scenario));
  current = 0;
  run.explorer.SwitchTo(ThreadOf(0).fiber);
  current = -1;
}

/// Adds what the run has shown to the report.
void Judge(const Scenario& scenario, Report& report) {
  ++(run.redundant ? report.redundant : report.schedules);
  if (run.redundant) return;
  report.violation = run.violation;
  for (int thread = 0; thread < run.thread_count && report.violation.empty(); ++thread) {
    if (!ThreadOf(thread).ended) report.violation = "a thread has not been joined";
  }
  const std::string outcome = run.environment->outcome();
  report.outcomes.insert(outcome);
  if (report.violation.empty() && !scenario.outcomes.contains(outcome)) {
    report.violation = "not allowed: \"" + outcome + "\"";
  }
}

/// Makes the path that of the next schedule. False: there is none.
bool NextPath() {
  while (!run.path.empty()) {
    Decision& last = run.path.back();
    last.tried |= SetOf(last.chosen);
    const Set left = last.ready & ~last.asleep & ~last.tried;
    if (left != 0) {
      last.chosen = std::countr_zero(left);
      return true;
    }
    run.path.pop_back();
  }
  return false;
}

}  // namespace

int CurrentThread() { return current; }

void Step(const Operation& operation) {
  {
    const CheckerMemory checker_memory;
    ThreadOf(current).next = operation;
  }
  GoOn();
}

int AddThread(void* (*start)(void*), void* argument) {
  if (run.thread_count == kMaxThreads) Fail("too many threads");
  Thread& thread = ThreadOf(run.thread_count);
  thread.next = {.name = "begin"};
  thread.start = start;
  thread.argument = argument;
  thread.ended = false;
  thread.fiber.Prepare(RunThread);
  return run.thread_count++;
}

Operation JoinOf(int thread) {
  const Thread& joined = ThreadOf(thread);
  return {
      .name = "join", .uses = {{{&joined, false}}}, .ready = [&joined] { return joined.ended; }};
}

void Branch(bool branch) { run.branching = branch; }

void Fail(const std::string& violation) {
  const CheckerMemory checker_memory;
  run.violation = violation;
  EndRun();
}

Report Explore(const Scenario& scenario, Environment& environment,
               const std::optional<std::string>& choices) {
  Report report;
  run.environment = &environment;
  run.printing = choices.has_value();
  // What the libraries initialize once is initialized before the schedules are compared.
  if (!choices) RunOnce(scenario);
  run.path.clear();
  for (const char choice : choices.value_or("")) run.path.push_back({.chosen = choice - '0'});
  do {
    RunOnce(scenario);
    Judge(scenario, report);
  } while (!choices && report.violation.empty() && NextPath());
  for (const Decision& decision : run.path) {
    report.choices += static_cast<char>('0' + decision.chosen);
  }
  return report;
}

}  // namespace sensorvela::schedules
