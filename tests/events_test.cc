#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/test_support.h"

namespace sensorvela::testing {
namespace {

using Texts = std::vector<std::string>;
using HalCall = SensorVela::HalCall;
using ErrorType = SensorVela::ErrorType;

/// Runs `body` on that many threads at once.
template <typename Body>
void OnThreads(int count, Body body) {
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) threads.emplace_back(body, i);
  for (std::thread& thread : threads) thread.join();
}

class ErrorTest : public EngineTest {
 protected:
  ErrorTest() {
    Start();
    time_.WaitUntilAtRest();
    start_lines_ = Lines().size();
  }

  Texts ErrorLines() {
    Texts lines = Lines();
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(start_lines_));
    return lines;
  }

 private:
  std::size_t start_lines_ = 0;
};

TEST_F(ErrorTest, EachIsLoggedAndSentAsItIs) {
  engine_->LogSensorHalError({0x1A2B, -2}, HalCall{-1}, -22);
  engine_->LogSensorRuntimeError({0xFFFFFFFF, 5}, ErrorType{4}, 9);
  EXPECT_EQ(Delivered(), (Texts{"100024 i6699 i-2 i-1 i-22", "100025 i-1 i5 i4 i9"}));
  EXPECT_EQ(ErrorLines(),
            (Texts{"I Reporting HAL call [-1] error [-22] on sensor [0x00001a2b].",
                   "I Reporting runtime time error [4] code [9] on sensor [0xffffffff]."}));
}

TEST_F(ErrorTest, TheCapCountsAnErrorOverAllSensorsAndCodes) {
  for (int i = 0; i < 5; ++i) engine_->LogSensorHalError({1, 1}, HalCall{3}, i);
  for (int i = 0; i < 5; ++i) engine_->LogSensorHalError({2, 2}, HalCall{3}, -i);
  // Neither another call nor another family counts with them.
  engine_->LogSensorHalError({1, 1}, HalCall{4}, 0);
  for (int i = 0; i < 12; ++i) engine_->LogSensorRuntimeError({1, 1}, ErrorType{3}, 0);
  engine_->LogSensorHalError({2, 2}, HalCall{3}, 0);
  EXPECT_EQ(Delivered().size(), 5U + 5U + 1U + 10U);
  const Texts lines = ErrorLines();
  EXPECT_EQ(Texts(lines.end() - 3, lines.end()),
            (Texts{"E Runtime Error [3] has occurred [11] times in current cycle, upload blocked "
                   "due to cap [10] met.",
                   "E Runtime Error [3] has occurred [12] times in current cycle, upload blocked "
                   "due to cap [10] met.",
                   "E HAL Error [3] has occurred [11] times in current cycle, upload blocked due "
                   "to cap [10] met."}));
}

TEST_F(ErrorTest, ACyclesEndLiftsTheCap) {
  const auto report = [this] { engine_->LogSensorHalError({1, 1}, HalCall{3}, 0); };
  for (int i = 0; i < 20; ++i) report();
  time_.RunTo(6h);
  EXPECT_EQ(Delivered().size(), 10U);
  for (int i = 0; i < 11; ++i) report();
  EXPECT_EQ(Delivered().size(), 10U);
  EXPECT_EQ(CountLines("occurred [11] times"), 2);
}

TEST_F(ErrorTest, ThreadsThatReportTheSameErrorShareItsCap) {
  constexpr int kThreads = 8;
  constexpr int kReportsEach = 50;
  OnThreads(kThreads, [this](int) {
    for (int i = 0; i < kReportsEach; ++i) engine_->LogSensorHalError({1, 1}, HalCall{-7}, i);
  });
  EXPECT_EQ(Delivered().size(), 10U);
  EXPECT_EQ(CountLines("I Reporting HAL call [-7]"), 10);
  for (int count = 1; count <= kThreads * kReportsEach; ++count) {
    EXPECT_EQ(CountLines("occurred [" + std::to_string(count) + "] times"), count > 10 ? 1 : 0);
  }
}

}  // namespace
}  // namespace sensorvela::testing
