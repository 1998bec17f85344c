#pragma once
#include "../../../testkit/atom_text.h"
