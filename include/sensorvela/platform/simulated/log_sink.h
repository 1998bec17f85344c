#pragma once
#include "../../../../platform/simulated/log_sink.h"
