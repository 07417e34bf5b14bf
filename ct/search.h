// The search primitives on which every substring search of the text tools
// rests, and the searches that the text-tools settings choose among them.
// Texts are byte strings; a match is returned as a pointer into the text.
#pragma once

#include <cstdint>

#include "kovo/vmengine.h"

// First exact match; every start position where the pattern fits is tried.
const char* ctAtForward(const char* text, uint32_t length, const char* pattern,
                        uint32_t patternLength, uint32_t* matchLength);
// Last exact match: from length - patternLength down to 0.
const char* ctAtBackward(const char* text, uint32_t length, const char* pattern,
                         uint32_t patternLength, uint32_t* matchLength);
// First wildcard match. The last position where the pattern still fits is
// never tried, so a forward wildcard search never finds a match that ends the
// text; programs rely on this.
const char* ctAtLikeForward(const char* text, uint32_t length, const char* pattern,
                            uint32_t patternLength, char wildcard, uint32_t* matchLength);
// Last wildcard match, the last fitting position included.
const char* ctAtLikeBackward(const char* text, uint32_t length, const char* pattern,
                             uint32_t patternLength, char wildcard, uint32_t* matchLength);
// First character of the text that is in the set; *setIndex receives its
// index within the set.
const char* ctAtCharSet(const char* text, uint32_t length, const char* set, uint32_t setLength,
                        uint32_t* setIndex);

// The forward and backward searches of the context's settings: exact in
// AT-like mode 0, wildcard with the AT-like character in mode 1, nothing found
// in any other mode.
const char* ctSearchForward(VMEngine* vm, const char* text, uint32_t length, const char* pattern,
                            uint32_t patternLength, uint32_t* matchLength);
const char* ctSearchBackward(VMEngine* vm, const char* text, uint32_t length, const char* pattern,
                             uint32_t patternLength, uint32_t* matchLength);

// The n-th forward match, each search after a match starting one character
// behind its start (multi-pass on) or right behind it. The count is compared
// as unsigned, so n = UINT32_MAX walks every match. Returns the n-th match or
// null; *found receives the number of matches seen.
const char* ctSearchNth(VMEngine* vm, const char* text, uint32_t length, const char* pattern,
                        uint32_t patternLength, uint32_t n, uint32_t* matchLength, uint32_t* found);

// The n-th match forward as ctSearchNth finds it, or the last match when n is 0.
const char* ctSearchNthOrLast(VMEngine* vm, const char* text, uint32_t length, const char* pattern,
                              uint32_t patternLength, uint32_t n, uint32_t* matchLength);
