// The context's heap: zero-filled blocks with a small header that records the
// owning heap, the size and a reference count (used by shared string buffers).
// A context allocates and frees short strings and small arrays at a high rate,
// and only its own thread uses its heap: small blocks are cut from large
// slabs, and a freed one is kept for the next allocation of its size class,
// so that neither costs a call of the C library. The slabs go back when the
// context ends.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kovo/vmengine.h"

inline constexpr size_t SIZE_CLASS_STEP = 16;
// GCC says so with a macro, clang with a feature test.
#if defined(__SANITIZE_ADDRESS__)
#define KOVO_HEAP_CHECKED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KOVO_HEAP_CHECKED 1
#endif
#endif
#if defined(KOVO_HEAP_CHECKED)
// Under the address sanitizer every block is the C library's and goes back at
// once, so that a use after free is caught.
inline constexpr size_t SIZE_CLASS_COUNT = 0;
#else
inline constexpr size_t SIZE_CLASS_COUNT = 16;  // blocks of up to 256 bytes
#endif
inline constexpr size_t SLAB_SIZE = size_t{64} << 10;
// One freed large block of this range is kept for the next large allocation
// it can serve: a program that reads file after file into strings then writes
// into memory already mapped, instead of having the system map and zero it
// again for each one. Not under the address sanitizer, for the same reason as
// the small blocks.
inline constexpr size_t SPARE_MIN = size_t{1} << 20;
inline constexpr size_t SPARE_MAX = SIZE_CLASS_COUNT ? size_t{128} << 20 : 0;

struct BlockHeader;
struct Slab;

struct Heap {
  size_t liveBlocks;
  BlockHeader* kept[SIZE_CLASS_COUNT + 1];  // freed small blocks by size class, linked
  Slab* slabs;                              // the slab being cut is the first
  size_t slabUsed;                          // bytes of the first slab cut so far
  BlockHeader* spare;                       // a freed large block, kept for reuse
};

struct alignas(16) BlockHeader {
  Heap* heap;
  size_t size;
  uint32_t refCount;
  uint16_t sizeClass;  // 0 for a block of the C library's, freed at once
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
// Gives the slabs back; the heap is ending.
void heapReleaseKept(Heap* heap);
