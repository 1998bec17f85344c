#pragma once
#include "../../../../service_process.h"
