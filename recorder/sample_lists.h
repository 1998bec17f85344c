// Writes samples of several sensors as one event, with a list for each sensor.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "recorder/sample.h"

namespace sensorvela::recorder {

/// Samples in the order of their arrival, until they are written. A reader merges the lists by the
/// arrivals, and of samples that arrive together takes that of the earlier list first.
///
/// A list is a text of numbers, two for each sample: by how much the interval since the list's
/// previous sample (for the first, since `at_ns`) differs from the interval before it, and by how
/// much the latency differs from the previous one; both begin at 0 and wrap. Each number is a
/// base-64 variable-length quantity: zigzag, five bits in a digit, the lowest first, 32 more in
/// each digit but the last.
class SampleLists {
 public:
  bool empty() const { return samples_ == 0; }

  /// Adds a sample. Returns false, and adds nothing, if it needs an event of its own: the present
  /// one is full, or the merge would not give the order in which the samples came.
  bool Add(const Sample& sample);

  /// Appends the event to `out` and forgets the samples.
  void WriteTo(std::string& out);

 private:
  struct List {
    SensorVela::SensorId sensor;
    std::int64_t arrival_ns;
    std::int64_t interval_ns;
    std::int64_t latency_ns;
    std::string text;
  };

  /// The position of the sensor's list, or the number of lists.
  std::size_t Find(SensorVela::SensorId sensor) const;

  std::vector<List> lists_;  // The first `used_` are in use; the others keep their memory.
  std::size_t used_ = 0;
  std::size_t samples_ = 0;
  std::int64_t first_arrival_ns_ = 0;
  std::int64_t last_arrival_ns_ = 0;
  std::size_t last_list_ = 0;
};

}  // namespace sensorvela::recorder
