#pragma once
#include "../../../atoms/memory_serviceability_histograms.h"
