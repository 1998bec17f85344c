#pragma once
#include "../../../atoms/diagnostics_atoms.h"
