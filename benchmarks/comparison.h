// Compares operations with their baselines: each in short slices, which take turns.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <string>

namespace sensorvela::benchmarks {

/// Runs an operation many times and returns the mean time of one, in nanoseconds.
using Slice = std::function<double()>;

/// Sets up whatever a slice needs. What it needs lives as long as the slice.
using MakeSlice = std::function<Slice()>;

/// The time that `count` calls took, divided by `count`.
template <typename Call>
double MeanNs(int count, const Call& call) {
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < count; ++i) call();
  const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - start;
  return time.count() / count;
}

/// An operation of the library, and its baseline: the unavoidable part of the same work, written by
/// hand.
struct Comparison {
  std::string table;
  std::string name;
  MakeSlice operation;
  MakeSlice baseline;
  /// The highest acceptable ratio; 0 if there is no goal.
  double goal = 0;
  /// The threads that run a slice. Only a row of one thread is expected to hold still.
  int threads = 1;
  /// How often each process sets the pair up and compares it.
  int repetitions = 41;
};

/// Adds a row that compares the two. Each repetition sets both up anew, and gives one ratio.
void Add(const Comparison& comparison);

/// A benchmark as Google Benchmark has it.
using Body = std::function<void(benchmark::State&)>;

/// Adds a row for an operation that has no baseline.
void Add(const std::string& table, const std::string& name, const Body& body);

/// Adds a row with a column for each counter that `body` sets: its median over some runs.
void AddCounters(const std::string& table, const std::string& name, const Body& body);

}  // namespace sensorvela::benchmarks
