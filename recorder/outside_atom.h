// Writes an outside atom, one that the host has built, as fields of its event's line.
#pragma once

#include <sensorvela/engine/sensor_vela.h>

#include "recorder/event_line.h"

namespace sensorvela::recorder {

/// A trace has no annotations, and no absent lists and texts: those are written as empty ones.
void WriteOutsideAtom(EventLine& line, const SensorVela::VendorAtom& atom);

}  // namespace sensorvela::recorder
