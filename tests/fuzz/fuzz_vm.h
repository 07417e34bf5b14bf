// What every fuzz target shares: one context for the whole run, and calls
// through a real frame with a string that refers to exactly the input bytes,
// so that a read past them is caught.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kovo/host_embed.h"

VMEngine* fuzzContext();

// A string item over exactly `size` bytes, not copied: nothing after them is
// readable, not even a terminating zero.
void putExactString(Item* dst, const uint8_t* data, size_t size);

// Calls the function with the items, drops its result, and aborts when the
// call left a heap block behind.
void fuzzCall(VMFunction function, Item* const* args, uint32_t argc);

// Aborts when heap blocks are live beyond those the context holds itself.
void checkNoLeak();

// The whole run of a function whose one parameter is the input as a string.
int fuzzStringReader(VMFunction function, const uint8_t* data, size_t size);
