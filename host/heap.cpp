#include "heap.h"

#include <cstdlib>
#include <cstring>

#include "kovo/host_errors.h"
#include "kovo/host_items.h"
#include "system_memory.h"

// Pieces are cut right behind the link, which keeps them aligned as blocks are.
struct alignas(16) Slab {
  Slab* next;
};

namespace {

// Size classes index from 1; the array of kept lists needs one entry more.
constexpr size_t KEPT_LISTS = SIZE_CLASS_COUNT + 1;

// The size class of a small block (1 to SIZE_CLASS_COUNT), or 0 for a large one.
size_t sizeClassOf(size_t size) {
  size_t sizeClass = size == 0 ? 1 : (size + SIZE_CLASS_STEP - 1) / SIZE_CLASS_STEP;
  return sizeClass <= SIZE_CLASS_COUNT ? sizeClass : 0;
}

void* startBlock(BlockHeader* header, Heap* heap, size_t size, size_t sizeClass) {
  header->heap = heap;
  header->size = size;
  header->refCount = 1;
  header->sizeClass = static_cast<uint16_t>(sizeClass);
  heap->liveBlocks++;
  return header + 1;
}

// A zero-filled piece of `bytes` from the current slab, or from a new one.
[[gnu::noinline]] BlockHeader* cutFromSlab(Heap* heap, size_t bytes) {
  if (!heap->slabs || SLAB_SIZE - heap->slabUsed < bytes) {
    auto* slab = static_cast<Slab*>(systemAllocZeroed(SLAB_SIZE));
    if (!slab) return nullptr;
    slab->next = heap->slabs;
    heap->slabs = slab;
    heap->slabUsed = sizeof(Slab);
  }
  auto* piece =
      reinterpret_cast<BlockHeader*>(reinterpret_cast<char*>(heap->slabs) + heap->slabUsed);
  heap->slabUsed += bytes;
  return piece;
}

// The spare block when it can hold `size` bytes without wasting more than half of it.
BlockHeader* takeSpare(Heap* heap, size_t size) {
  BlockHeader* spare = heap->spare;
  if (!spare || size < SPARE_MIN || spare->size < size || size < spare->size / 2) return nullptr;
  heap->spare = nullptr;
  return spare;
}

// A large block: the spare one (zeroed unless `zero` is false) or a new one
// of the system's.
[[gnu::noinline]] void* allocateLarge(Heap* heap, size_t size, bool zero) {
  if (size > SIZE_MAX - sizeof(BlockHeader)) return nullptr;
  BlockHeader* header = takeSpare(heap, size);
  if (header && zero) std::memset(header + 1, 0, size);
  if (!header) header = static_cast<BlockHeader*>(systemAllocZeroed(sizeof(BlockHeader) + size));
  return header ? startBlock(header, heap, size, 0) : nullptr;
}

// A block of `size` bytes: a kept one of its class when there is one (zeroed
// unless `zero` is false), else a zero-filled one cut from a slab.
void* allocate(Heap* heap, size_t size, bool zero) {
  size_t sizeClass = sizeClassOf(size);
  if (!sizeClass) return allocateLarge(heap, size, zero);
  BlockHeader* header = heap->kept[sizeClass];
  if (!header) {
    header = cutFromSlab(heap, sizeof(BlockHeader) + sizeClass * SIZE_CLASS_STEP);
    return header ? startBlock(header, heap, size, sizeClass) : nullptr;
  }
  heap->kept[sizeClass] = *reinterpret_cast<BlockHeader**>(header + 1);
  if (zero) std::memset(header + 1, 0, size);
  return startBlock(header, heap, size, sizeClass);
}

// Keeps a freed large block as the spare when it is of the range kept.
[[gnu::noinline]] void freeLarge(Heap* heap, BlockHeader* header) {
  if (header->size < SPARE_MIN || header->size > SPARE_MAX) return systemFree(header);
  if (heap->spare) systemFree(heap->spare);
  heap->spare = header;
}

void heapFree(void* block) {
  BlockHeader* header = blockHeader(block);
  Heap* heap = header->heap;
  heap->liveBlocks--;
  size_t sizeClass = header->sizeClass;
  if (sizeClass == 0) return freeLarge(heap, header);
  *reinterpret_cast<BlockHeader**>(header + 1) = heap->kept[sizeClass];
  heap->kept[sizeClass] = header;
}

}  // namespace

void* heapAllocRaw(Heap* heap, size_t size) {
  return allocate(heap, size, true);
}

void* heapAllocFilled(Heap* heap, size_t size) {
  return allocate(heap, size, false);
}

void heapReleaseKept(Heap* heap) {
  for (size_t sizeClass = 0; sizeClass < KEPT_LISTS; sizeClass++)
    heap->kept[sizeClass] = nullptr;
  if (heap->spare) systemFree(heap->spare);
  heap->spare = nullptr;
  while (Slab* slab = heap->slabs) {
    heap->slabs = slab->next;
    systemFree(slab);
  }
}

void* vmTryAlloc(VMEngine* vm, size_t size) {
  return heapAllocRaw(vm->heap, size);
}

void* vmAlloc(VMEngine* vm, size_t size) {
  void* block = heapAllocRaw(vm->heap, size);
  if (!block) err_Internal(vm, 9009, "Memory low", nullptr);
  return block;
}

namespace {

// A small block moves into a block of the system's, keeping its holders.
void* leaveSlab(VMEngine* vm, void* block, size_t size) {
  BlockHeader* header = blockHeader(block);
  auto* moved = static_cast<BlockHeader*>(systemAllocZeroed(sizeof(BlockHeader) + size));
  if (!moved) return nullptr;
  std::memcpy(moved + 1, block, header->size < size ? header->size : size);
  uint32_t holders = header->refCount;
  heapFree(block);
  void* result = startBlock(moved, vm->heap, size, 0);
  moved->refCount = holders;
  return result;
}

void* reallocate(VMEngine* vm, void* block, size_t size, bool zero) {
  if (!block) return allocate(vm->heap, size, zero);
  if (size > SIZE_MAX - sizeof(BlockHeader)) return nullptr;
  BlockHeader* header = blockHeader(block);
  if (header->sizeClass != 0) return leaveSlab(vm, block, size);
  size_t oldSize = header->size;
  auto* grown = static_cast<BlockHeader*>(systemRealloc(header, sizeof(BlockHeader) + size));
  if (!grown) return nullptr;
  if (zero && size > oldSize) {
    std::memset(reinterpret_cast<char*>(grown + 1) + oldSize, 0, size - oldSize);
  }
  grown->size = size;
  return grown + 1;
}

}  // namespace

void* vmTryRealloc(VMEngine* vm, void* block, size_t size) {
  return reallocate(vm, block, size, true);
}

void* vmTryReallocUnfilled(VMEngine* vm, void* block, size_t size) {
  return reallocate(vm, block, size, false);
}

void* vmRealloc(VMEngine* vm, void* block, size_t size) {
  void* grown = vmTryRealloc(vm, block, size);
  if (!grown) err_Internal(vm, 9009, "Memory low", nullptr);
  return grown;
}

void vmFree(VMEngine*, void* block) {
  if (block) heapFree(block);
}

void heapRetain(void* block) {
  blockHeader(block)->refCount++;
}

void heapRelease(void* block) {
  if (--blockHeader(block)->refCount == 0) heapFree(block);
}
