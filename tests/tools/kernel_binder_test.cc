// Plays what was seen over a kernel's binder driver, with the stats service in a process of its
// own, and compares the figures.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/run/replay.h"
#include "tools/trace/trace.h"

namespace sensorvela::tools {
namespace {

using ::testing::AllOf;
using ::testing::Ge;
using ::testing::Le;
using ::testing::Optional;

constexpr std::int64_t kMsNs = 1'000'000;

std::string Line(std::int64_t at_ns, const std::string& event) {
  return R"({"at_ns":)" + std::to_string(at_ns) + R"(,"event":")" + event + "}\n";
}

/// An atom of four values.
std::string Atom(std::int64_t at_ns) {
  return Line(at_ns, R"(hal_latency","operation":1,"sensor_high":1,"sensor_low":1,"latency_ns":7)");
}

std::string Registered(std::int64_t at_ns, std::int64_t atom_ns) {
  return Line(at_ns, R"(service_registered","atom_ns":)" + std::to_string(atom_ns));
}

std::string EngineStarts() { return Line(0, R"(engine_start","supplier":"none")"); }
std::string TimePasses(std::int64_t at_ns) { return Line(at_ns, R"(time_passes")"); }

struct Outcome : RunObserver {
  void OnAtom(Instant /*at*/, const AtomFact& fact) override {
    if (fact.answer == testkit::Answer::kError && !first_failure) {
      first_failure = fact.cause.line() - lines_before_atoms;
    }
  }
  void OnLogLine(Instant /*at*/, int /*priority*/, std::string_view /*tag*/,
                 std::string_view text) override {
    log.emplace_back(text);
  }
  void OnRunEnd(Instant /*at*/, const Summary& end) override { summary = end; }

  std::size_t lines_before_atoms = 0;
  /// Counted from 1, in the order in which the atoms were queued.
  std::optional<std::size_t> first_failure;
  std::vector<std::string> log;
  Summary summary;
};

Outcome Play(const std::string& text, std::size_t lines_before_atoms = 0) {
  Outcome outcome;
  outcome.lines_before_atoms = lines_before_atoms;
  const Trace trace("t", Input(text));
  Replay({&outcome}, true).Run(trace.Events(false));
  return outcome;
}

/// What was queued while the service was away is sent at once when it comes up.
Outcome PlayBacklog(std::size_t atoms) {
  std::string trace = EngineStarts();
  for (std::size_t i = 0; i < atoms; ++i) trace += Atom(1);
  return Play(trace + Registered(2, kMsNs) + TimePasses(60'000 * kMsNs), 1);
}

/// The same at the pace of the kernel: there a report takes time, one that fails the more, because
/// it is logged. In a replay it takes none, so the instants of the events have it.
Outcome PlayBacklogAtPace(std::size_t atoms) {
  constexpr std::int64_t kReportNs = 11'650;
  constexpr std::int64_t kFailedReportNs = 34'500;
  std::string trace = Registered(0, kMsNs) + EngineStarts();
  std::int64_t at_ns = 0;
  for (std::size_t i = 0; i < atoms; ++i) {
    at_ns += i < 3133 ? kReportNs : kFailedReportNs;
    trace += Atom(at_ns);
  }
  return Play(trace + TimePasses(60'000 * kMsNs), 2);
}

// Of 5,000 atoms 1,804 failed, the first was number 3,133; of 50,000 atoms 45,197. The service took
// a millisecond for each.
TEST(KernelBinderTest, ABacklogDoesNotFit) {
  const Outcome at_once = PlayBacklog(5'000);
  EXPECT_EQ(at_once.first_failure, 3'097U);
  EXPECT_EQ(at_once.summary.failed, 1'904U);
  EXPECT_EQ(at_once.summary.did_not_fit, 1'904U);
  EXPECT_EQ(at_once.summary.delivered, 3'096U);
  EXPECT_EQ(PlayBacklog(50'000).summary.did_not_fit, 46'904U);

  const Outcome at_pace = PlayBacklogAtPace(5'000);
  EXPECT_THAT(at_pace.first_failure, Optional(AllOf(Ge(3'118U), Le(3'148U))));
  EXPECT_THAT(at_pace.summary.failed, AllOf(Ge(1'795U), Le(1'813U)));
  EXPECT_THAT(PlayBacklogAtPace(50'000).summary.failed, AllOf(Ge(44'970U), Le(45'420U)));
}

// 4,000 atoms, one every 8 ms, of which each takes 10 ms: none is lost.
TEST(KernelBinderTest, AServiceThatIsALittleTooSlowLosesNothing) {
  std::string trace = Registered(0, 10 * kMsNs) + EngineStarts();
  for (std::int64_t i = 1; i <= 4'000; ++i) trace += Atom(i * 8 * kMsNs);
  const Outcome outcome = Play(trace + TimePasses(60'000 * kMsNs));
  EXPECT_EQ(outcome.summary.delivered, 4'000U);
  EXPECT_EQ(outcome.summary.failed + outcome.summary.dropped + outcome.summary.left_in_buffer, 0U);
}

TEST(KernelBinderTest, ATextOf250000CharactersNeverFits) {
  const std::string text(250'000, 'x');
  const Outcome outcome =
      Play(Registered(0, 0) + EngineStarts() +
           Line(1, R"(atom","id":7,"values":[{"string":")" + text + R"("}])") + TimePasses(kMsNs));
  EXPECT_EQ(outcome.summary.did_not_fit, 1U);
  EXPECT_EQ(outcome.log.back(), "Failed to report atom [id = 7].");
}

// Killed with 238 to 315 atoms in the buffer: all were lost, and the log had one line, of the next
// batch. The one after that waited for the service that was started again.
TEST(KernelBinderTest, WhatIsInTheBufferOfADyingServiceIsLostWithoutALine) {
  std::string trace = EngineStarts();
  for (int i = 0; i < 338; ++i) trace += Atom(1);
  trace += Registered(2, kMsNs) + Line(38 * kMsNs + 2, R"(service_dies")");
  trace += Atom(40 * kMsNs) + Atom(41 * kMsNs) + Registered(4'000 * kMsNs, kMsNs);
  const Outcome outcome = Play(trace + TimePasses(5'000 * kMsNs));
  EXPECT_EQ(outcome.summary.lost_in_buffer, 300U);
  EXPECT_EQ(outcome.summary.dropped, 1U);
  EXPECT_EQ(outcome.summary.delivered, 38U + 1U);
  EXPECT_EQ(outcome.log,
            std::vector<std::string>({"IStats service is not registered.",
                                      "Failed to get IStats service. Atoms are dropped."}));
}

// The service's one thread was asleep for 5 s with an atom. The engine was destroyed meanwhile: its
// thread was held in a lookup, and 99 of 101 atoms were discarded.
TEST(KernelBinderTest, ABusyServiceHoldsTheLookup) {
  std::string trace = Registered(0, 5'000 * kMsNs) + EngineStarts() + Atom(1);
  for (int i = 0; i < 100; ++i) trace += Atom(500 * kMsNs);
  const Outcome held = Play(trace + TimePasses(4'900 * kMsNs));
  EXPECT_EQ(held.summary.lookups_awaited_process, 1U);
  EXPECT_EQ(held.summary.left_in_buffer, 1U);
  EXPECT_EQ(held.summary.dropped, 100U) << "the run's end releases the lookup";

  const Outcome goes_on = Play(trace + TimePasses(5'001 * kMsNs));
  EXPECT_EQ(goes_on.summary.delivered, 1U);
  EXPECT_EQ(goes_on.summary.dropped, 99U);
  EXPECT_EQ(goes_on.summary.longest_process_wait, std::chrono::nanoseconds(4'500 * kMsNs + 1));
}

}  // namespace
}  // namespace sensorvela::tools
