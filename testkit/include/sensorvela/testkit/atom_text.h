#pragma once
#include "../../../atom_text.h"
