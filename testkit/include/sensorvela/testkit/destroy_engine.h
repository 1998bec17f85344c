#pragma once
#include "../../../destroy_engine.h"
