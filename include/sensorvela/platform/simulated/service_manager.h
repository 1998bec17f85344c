#pragma once
#include "../../../../platform/simulated/service_manager.h"
