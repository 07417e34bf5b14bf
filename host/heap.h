// The context's heap: zero-filled blocks with a small header that records the
// owning heap, the size and a reference count (used by shared string buffers).
// Small blocks that are freed are kept for the next allocation of their size
// class: a context allocates and frees short strings at a high rate, and only
// its own thread uses its heap.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kovo/vmengine.h"

inline constexpr size_t SIZE_CLASS_STEP = 16;
inline constexpr size_t SIZE_CLASS_COUNT = 16;  // blocks of up to 256 bytes are kept
#if defined(__SANITIZE_ADDRESS__)
// Under the address sanitizer every block goes back at once, so that a use
// after free is caught.
inline constexpr size_t KEPT_PER_CLASS = 0;
#else
inline constexpr size_t KEPT_PER_CLASS = 4096;
#endif

struct BlockHeader;

struct Heap {
  size_t liveBlocks;
  BlockHeader* kept[SIZE_CLASS_COUNT + 1];  // freed blocks by size class, linked
  size_t keptCount[SIZE_CLASS_COUNT + 1];
};

struct alignas(16) BlockHeader {
  Heap* heap;
  size_t size;
  uint32_t refCount;
  uint16_t sizeClass;  // 0 for a block that is freed at once, not kept
};

inline BlockHeader* blockHeader(void* block) {
  return static_cast<BlockHeader*>(block) - 1;
}

// Adds a holder to a heap block; heapRelease frees it when the last one lets go.
void heapRetain(void* block);
void heapRelease(void* block);
void* heapAllocRaw(Heap* heap, size_t size);
// A block whose bytes the caller writes in full at once, so they are not
// zeroed first.
void* heapAllocFilled(Heap* heap, size_t size);
// Frees the blocks kept for reuse; the heap is ending.
void heapReleaseKept(Heap* heap);
