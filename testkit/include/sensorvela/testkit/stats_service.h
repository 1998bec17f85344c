#pragma once
#include "../../../stats_service.h"
