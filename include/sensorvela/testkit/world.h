#pragma once
#include "../../../testkit/world.h"
