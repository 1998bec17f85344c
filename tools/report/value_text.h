// An atom's values as text, for people.
#pragma once

#include <string>

#include "tools/facts/run_observer.h"
#include "tools/text/names.h"

namespace sensorvela::tools {

/// Of an atom that reached the stats service, all values by their names, in order: "hal_call=3
/// error_code=-22". The label of a sensor that has a name stands before them.
std::string AllValues(const AtomFact& fact, const SensorNames& names);

/// Of such an atom, the sensor's label in the place of its identifier, and the values that say
/// something: not 0, not empty and, in an atom of a sensor's state, not -1, which stands for none.
/// Of a name that differs from the one before in its number alone, the number: "value_1=3 2=5".
/// Without `has_lists` the lists are left out, and " ..." at the end stands for them.
std::string FoldedValues(const AtomFact& fact, const SensorNames& names, bool has_lists = true);

}  // namespace sensorvela::tools
