// The text tools' per-thread fields: the argument-error mode and the
// initialised flag.
#pragma once

#include <cstdint>

#include "kovo/vmengine.h"

struct CtState {
  int32_t argErrorMode;  // -1 ignore, 0 who-cares, 1 warning, 2 error, 3 catastrophic
  int32_t initialised;
};

CtState& ctState(VMEngine* vm);
