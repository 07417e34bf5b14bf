#include "host/system_memory.h"

#include <cstdlib>

void* systemAllocZeroed(size_t size) {
  return std::calloc(1, size);
}

void* systemRealloc(void* block, size_t size) {
  return std::realloc(block, size);
}

void systemFree(void* block) {
  std::free(block);
}
