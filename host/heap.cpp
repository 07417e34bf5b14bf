#include "heap.h"

#include <cstring>

#include "kovo/host_errors.h"
#include "kovo/host_items.h"
#include "system_memory.h"

namespace {

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

[[gnu::noinline]] void* allocateNew(Heap* heap, size_t size, size_t sizeClass) {
  if (size > SIZE_MAX - sizeof(BlockHeader)) return nullptr;
  size_t capacity = sizeClass ? sizeClass * SIZE_CLASS_STEP : size;
  auto* header = static_cast<BlockHeader*>(systemAllocZeroed(sizeof(BlockHeader) + capacity));
  return header ? startBlock(header, heap, size, sizeClass) : nullptr;
}

// A block of `size` bytes: a kept one of its class when there is one (zeroed
// unless `zero` is false), else a new, zero-filled one.
void* allocate(Heap* heap, size_t size, bool zero) {
  size_t sizeClass = sizeClassOf(size);
  BlockHeader* header = sizeClass ? heap->kept[sizeClass] : nullptr;
  if (!header) return allocateNew(heap, size, sizeClass);
  heap->kept[sizeClass] = *reinterpret_cast<BlockHeader**>(header + 1);
  heap->keptCount[sizeClass]--;
  if (zero) std::memset(header + 1, 0, size);
  return startBlock(header, heap, size, sizeClass);
}

void heapFree(void* block) {
  BlockHeader* header = blockHeader(block);
  Heap* heap = header->heap;
  heap->liveBlocks--;
  size_t sizeClass = header->sizeClass;
  if (sizeClass != 0 && heap->keptCount[sizeClass] < KEPT_PER_CLASS) {
    *reinterpret_cast<BlockHeader**>(header + 1) = heap->kept[sizeClass];
    heap->kept[sizeClass] = header;
    heap->keptCount[sizeClass]++;
    return;
  }
  systemFree(header);
}

}  // namespace

void* heapAllocRaw(Heap* heap, size_t size) {
  return allocate(heap, size, true);
}

void* heapAllocFilled(Heap* heap, size_t size) {
  return allocate(heap, size, false);
}

void heapReleaseKept(Heap* heap) {
  for (size_t sizeClass = 1; sizeClass <= SIZE_CLASS_COUNT; sizeClass++) {
    while (BlockHeader* header = heap->kept[sizeClass]) {
      heap->kept[sizeClass] = *reinterpret_cast<BlockHeader**>(header + 1);
      systemFree(header);
    }
    heap->keptCount[sizeClass] = 0;
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

void* reallocate(VMEngine* vm, void* block, size_t size, bool zero) {
  if (!block) return vmTryAlloc(vm, size);
  if (size > SIZE_MAX - sizeof(BlockHeader)) return nullptr;
  BlockHeader* header = blockHeader(block);
  size_t oldSize = header->size;
  auto* grown = static_cast<BlockHeader*>(systemRealloc(header, sizeof(BlockHeader) + size));
  if (!grown) return nullptr;
  if (zero && size > oldSize) {
    std::memset(reinterpret_cast<char*>(grown + 1) + oldSize, 0, size - oldSize);
  }
  grown->size = size;
  // The block's capacity is no longer its class's: it is freed, not kept.
  grown->sizeClass = 0;
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
