// The context's heap: zero-filled blocks with a small header that records the
// owning heap, the size and a reference count (used by shared string buffers).
#pragma once

#include <cstddef>
#include <cstdint>

#include "kovo/vmengine.h"

struct Heap {
  size_t liveBlocks;
  size_t liveBytes;
};

struct alignas(16) BlockHeader {
  Heap* heap;
  size_t size;
  uint32_t refCount;
  uint32_t magic;
};

inline constexpr uint32_t BLOCK_MAGIC = 0x4B4F564Fu;

inline BlockHeader* blockHeader(void* block) {
  return static_cast<BlockHeader*>(block) - 1;
}

// Adds a holder to a heap block; heapRelease frees it when the last one lets go.
void heapRetain(void* block);
void heapRelease(void* block);
void* heapAllocRaw(Heap* heap, size_t size);
