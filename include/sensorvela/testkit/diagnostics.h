#pragma once
#include "../../../testkit/diagnostics.h"
