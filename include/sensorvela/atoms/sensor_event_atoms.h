#pragma once
#include "../../../atoms/sensor_event_atoms.h"
