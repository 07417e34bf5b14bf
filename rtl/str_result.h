// How the string functions read their optional arguments and put their
// results. New text is built in one buffer of the context's heap that the
// return item adopts; a slice of an argument is copied once; a result equal
// to an argument is that argument itself.
#pragma once

#include <cstdint>

#include "frame/frame.h"

// A buffer for `length` bytes of new text and the zero byte after them.
char* newText(VMEngine* vm, uint64_t length);
// Hands a buffer from newText to the return item.
void returnText(VMEngine* vm, char* buffer, uint32_t length);
// `count` bytes of the string item `source` from byte `start` (0-based): the
// item itself when that is all of it, the empty text when count is 0.
void returnSlice(VMEngine* vm, const Item* source, uint32_t start, uint32_t count);

// A count clamped to 0..length.
uint32_t clampCount(int64_t count, uint32_t length);

// Parameter n read with `param` as an on/off switch. An array, on which the
// reader would throw, is off like every other value that is no number,
// logical or one-byte string.
bool paramSwitch(VMEngine* vm, int n);

// Whether a text of `length` bytes is beyond what a string item can hold
// (4294967295 bytes or more).
bool textTooLong(double length);
// The string-overflow error (general code 3, subcode 1234) listing `declared`
// arguments; the handler's substitute becomes the result.
void stringOverflowError(VMEngine* vm, const char* operation, int declared);
