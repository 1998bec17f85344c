#pragma once
#include "../../../../platform/simulated/virtual_time.h"
