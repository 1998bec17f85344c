#pragma once
#include "../../../testkit/atom_catalogue.h"
