// The first occurrence of a byte pattern in a text, in linear time whatever
// the bytes: the C library's memmem where there is one.
#pragma once

#include <cstddef>

// Null when the pattern does not occur; an empty pattern is found at the start.
const char* searchBytes(const char* text, size_t length, const char* pattern, size_t patternLength);
