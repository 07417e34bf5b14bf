// The last occurrence of a pattern in a text in time linear in their lengths
// whatever the bytes, and in constant space: the two-way search run from the
// text's end toward its start.
#pragma once

#include <cstddef>

// The start of the last occurrence of the pattern (1 byte or more) in the
// text, or null.
const char* lastOccurrence(const char* text, size_t length, const char* pattern,
                           size_t patternLength);
