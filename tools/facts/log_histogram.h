// A histogram that says any percentile of what it has counted, with a known error.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace sensorvela::tools {

/// Counts values of any size in buckets of 1/64 of a power of two; a value below 0 counts as 0. It
/// takes no more than 60 KiB, and a kibibyte where all values are of one power of two.
///
/// A percentile is the mean of its bucket. It differs from the true one by less than 1/64 of it,
/// and not at all if all values of the bucket are equal.
class LogHistogram {
 public:
  LogHistogram() = default;
  LogHistogram(const LogHistogram& other) { *this += other; }
  LogHistogram& operator=(const LogHistogram& other);
  LogHistogram(LogHistogram&&) = default;
  LogHistogram& operator=(LogHistogram&&) = default;
  ~LogHistogram() = default;

  void Add(std::int64_t value);

  LogHistogram& operator+=(const LogHistogram& other);

  std::uint64_t count() const { return count_; }

  /// Exact; 0 if nothing has been counted.
  std::int64_t greatest() const { return greatest_; }

  /// The value that `share` of all values do not exceed, from 0 to 1; 0 if nothing has been
  /// counted.
  std::int64_t Percentile(double share) const;

 private:
  static constexpr std::size_t kBucketBits = 6;
  static constexpr std::size_t kBucketsPerOctave = std::size_t{1} << kBucketBits;
  /// The first one has the values below 64, one a bucket.
  static constexpr std::size_t kOctaves = 64 - kBucketBits;

  struct Bucket {
    std::uint64_t count = 0;
    /// Of what its values exceed the least one that it can have.
    double excess = 0;
  };

  using Octave = std::array<Bucket, kBucketsPerOctave>;

  std::array<std::unique_ptr<Octave>, kOctaves> octaves_;
  std::uint64_t count_ = 0;
  std::int64_t greatest_ = 0;
};

}  // namespace sensorvela::tools
