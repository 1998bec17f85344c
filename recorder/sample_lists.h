// Writes samples of several sensors as one event, with a list for each sensor.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "trace_format/sample.h"
#include "trace_format/sample_list.h"

namespace sensorvela::recorder {

/// Samples in the order of their arrival, until they are written. A reader merges the lists by the
/// arrivals, and of samples that arrive together takes that of the earlier list first.
class SampleLists {
 public:
  bool empty() const { return samples_ == 0; }

  /// Adds a sample. Returns false, and adds nothing, if it needs an event of its own: the present
  /// one is full, or the merge would not give the order in which the samples came.
  bool Add(const trace_format::Sample& sample);

  /// Appends the event to `out` and forgets the samples.
  void WriteTo(std::string& out);

 private:
  struct List {
    SensorVela::SensorId sensor;
    trace_format::SampleListCodec codec{0};
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
