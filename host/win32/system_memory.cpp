#include "host/system_memory.h"

#include <windows.h>

void* systemAllocZeroed(size_t size) {
  return HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, size);
}

void* systemRealloc(void* block, size_t size) {
  return HeapReAlloc(GetProcessHeap(), 0, block, size);
}

void systemFree(void* block) {
  HeapFree(GetProcessHeap(), 0, block);
}
