#pragma once
#include "../../../testkit/value_kinds.h"
