// The descriptors of the standard streams.
#pragma once

namespace sensorvela::tools {

/// Opens those that the command was started without, so that no file gets their numbers. To read
/// from or write to one of them fails as it would if it were closed. To be called first of all.
void OccupyStandardStreams();

}  // namespace sensorvela::tools
