#pragma once
#include "../../../engine/sensor_vela.h"
