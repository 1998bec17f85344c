#pragma once

#include <vector>

#include "tests/schedules/explorer.h"

namespace sensorvela::schedules {

std::vector<Scenario> AllScenarios();

}  // namespace sensorvela::schedules
