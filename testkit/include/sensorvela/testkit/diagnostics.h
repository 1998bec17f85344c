#pragma once
#include "../../../diagnostics.h"
