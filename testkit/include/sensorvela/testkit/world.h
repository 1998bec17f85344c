#pragma once
#include "../../../world.h"
