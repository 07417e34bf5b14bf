#pragma once

#include "library.h"

#define KOVO_VERSION_TEXT "1.0.0"

// Reads statements at a prompt until the end of input; returns the exit status.
int runInteractive(const Library& library, bool extendedFrames);
