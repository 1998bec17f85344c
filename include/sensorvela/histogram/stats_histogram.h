#pragma once
#include "../../../histogram/stats_histogram.h"
