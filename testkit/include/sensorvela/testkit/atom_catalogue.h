#pragma once
#include "../../../atom_catalogue.h"
