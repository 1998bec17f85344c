#pragma once
#include "../../../../log_sink.h"
