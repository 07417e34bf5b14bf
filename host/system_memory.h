// Where the context heaps get their memory from the system: the C library's
// allocator on POSIX systems, the process heap on Windows, as the
// interpreter's own modules share it there.
#pragma once

#include <cstddef>

// A zero-filled block; null when there is no memory.
void* systemAllocZeroed(size_t size);
// The block grown or shrunk (the new bytes not zeroed); null, with the block
// kept, when there is no memory.
void* systemRealloc(void* block, size_t size);
void systemFree(void* block);
