#pragma once
#include "../../../value_kinds.h"
