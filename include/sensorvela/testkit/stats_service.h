#pragma once
#include "../../../testkit/stats_service.h"
