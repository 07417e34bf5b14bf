// Case files: statements with the exact output they must print, run each in
// a fresh context and a fresh temporary directory, as `kovo -e` would run them.
#pragma once

#include <string>
#include <vector>

#include "library.h"

// Runs the case files; prints every failure and a summary line per file.
// Returns the number of failed cases (missing files count as one each).
int runCaseFiles(const Library& library, const std::vector<std::string>& files,
                 bool extendedFrames);
