#pragma once
#include "../../../../service_manager.h"
