// The operating system's source of random bytes.
#pragma once

#include <cstddef>

// Fills `buffer` with `size` random bytes; false when the source fails.
bool osRandomBytes(void* buffer, size_t size);
