#include "tools/facts/log_histogram.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace sensorvela::tools {

void LogHistogram::Add(std::int64_t value) {
  const auto magnitude = static_cast<std::uint64_t>(std::max<std::int64_t>(value, 0));
  const auto bits = static_cast<std::size_t>(std::bit_width(magnitude));
  const std::size_t octave = bits > kBucketBits ? bits - kBucketBits : 0;
  // The bits of a bucket's values that do not differ.
  const std::size_t shift = octave > 0 ? octave - 1 : 0;
  std::unique_ptr<Octave>& buckets = octaves_[octave];
  if (buckets == nullptr) buckets = std::make_unique<Octave>();
  Bucket& bucket = (*buckets)[(magnitude >> shift) % kBucketsPerOctave];
  ++bucket.count;
  bucket.excess += static_cast<double>(magnitude & ((std::uint64_t{1} << shift) - 1));
  ++count_;
  greatest_ = std::max(greatest_, value);
}

LogHistogram& LogHistogram::operator=(const LogHistogram& other) {
  if (this == &other) return *this;
  *this = LogHistogram();
  return *this += other;
}

LogHistogram& LogHistogram::operator+=(const LogHistogram& other) {
  for (std::size_t i = 0; i < kOctaves; ++i) {
    if (other.octaves_[i] == nullptr) continue;
    if (octaves_[i] == nullptr) octaves_[i] = std::make_unique<Octave>();
    for (std::size_t j = 0; j < kBucketsPerOctave; ++j) {
      (*octaves_[i])[j].count += (*other.octaves_[i])[j].count;
      (*octaves_[i])[j].excess += (*other.octaves_[i])[j].excess;
    }
  }
  count_ += other.count_;
  greatest_ = std::max(greatest_, other.greatest_);
  return *this;
}

std::int64_t LogHistogram::Percentile(double share) const {
  const double rank = std::max(1.0, std::ceil(share * static_cast<double>(count_)));
  std::uint64_t below = 0;
  for (std::size_t i = 0; i < kOctaves; ++i) {
    for (std::size_t j = 0; octaves_[i] != nullptr && j < kBucketsPerOctave; ++j) {
      const Bucket& bucket = (*octaves_[i])[j];
      below += bucket.count;
      if (bucket.count == 0 || static_cast<double>(below) < rank) continue;
      const std::size_t shift = i > 0 ? i - 1 : 0;
      const std::uint64_t least = (i > 0 ? j + kBucketsPerOctave : j) << shift;
      const auto mean = std::llround(bucket.excess / static_cast<double>(bucket.count));
      const auto greatest = static_cast<std::uint64_t>(greatest_);
      return static_cast<std::int64_t>(
          std::min(least + static_cast<std::uint64_t>(mean), greatest));
    }
  }
  return 0;
}

}  // namespace sensorvela::tools
