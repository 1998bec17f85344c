#pragma once
#include "../../../testkit/destroy_engine.h"
