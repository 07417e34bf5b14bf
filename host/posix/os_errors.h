// The Windows error code that the same failure gives on Windows, for an errno.
#pragma once

#include <cstdint>

#include "name_space.h"

uint32_t windowsCode(int error);
// The code of a name that did not resolve to an existing entry.
uint32_t missingNameCode(NameStatus status);
