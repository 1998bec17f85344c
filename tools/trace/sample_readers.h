// Reads events that stand for many samples.
#pragma once

#include <cstdint>
#include <vector>

#include "tools/run/sample_trains.h"
#include "tools/trace/field_reader.h"
#include "trace_format/sample.h"

namespace sensorvela::tools {

/// Throws `EventError` for a train that lasts so long that its times could overflow.
SampleTrain ReadSampleTrain(FieldReader& fields);

/// The samples of all lists of a recording's event, in the order of their arrival; of those that
/// arrive together, the sample of the earlier list first. `at_ns` is the event's instant. Throws
/// `EventError` for a list that is not as docs/trace-format.md says.
std::vector<trace_format::Sample> ReadSampleLists(FieldReader& fields, std::int64_t at_ns);

}  // namespace sensorvela::tools
