#pragma once
#include "../../../atoms/standalone_atoms.h"
