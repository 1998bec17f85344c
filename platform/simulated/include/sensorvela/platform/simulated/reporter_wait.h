#pragma once
#include "../../../../reporter_wait.h"
