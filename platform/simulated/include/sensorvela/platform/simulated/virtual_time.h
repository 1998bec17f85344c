#pragma once
#include "../../../../virtual_time.h"
