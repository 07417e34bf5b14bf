#include "heap.h"

#include <cstdlib>
#include <cstring>

#include "kovo/host_errors.h"
#include "kovo/host_items.h"

void* heapAllocRaw(Heap* heap, size_t size) {
  if (size > SIZE_MAX - sizeof(BlockHeader)) return nullptr;
  auto* header = static_cast<BlockHeader*>(std::calloc(1, sizeof(BlockHeader) + size));
  if (!header) return nullptr;
  header->heap = heap;
  header->size = size;
  header->refCount = 1;
  header->magic = BLOCK_MAGIC;
  heap->liveBlocks++;
  heap->liveBytes += size;
  return header + 1;
}

void* vmTryAlloc(VMEngine* vm, size_t size) {
  return heapAllocRaw(vm->heap, size);
}

void* vmAlloc(VMEngine* vm, size_t size) {
  void* block = heapAllocRaw(vm->heap, size);
  if (!block) err_Internal(vm, 9009, "Memory low", nullptr);
  return block;
}

void* vmTryRealloc(VMEngine* vm, void* block, size_t size) {
  if (!block) return vmTryAlloc(vm, size);
  if (size > SIZE_MAX - sizeof(BlockHeader)) return nullptr;
  BlockHeader* header = blockHeader(block);
  size_t oldSize = header->size;
  auto* grown = static_cast<BlockHeader*>(std::realloc(header, sizeof(BlockHeader) + size));
  if (!grown) return nullptr;
  if (size > oldSize) std::memset(reinterpret_cast<char*>(grown + 1) + oldSize, 0, size - oldSize);
  grown->heap->liveBytes += size - oldSize;
  grown->size = size;
  return grown + 1;
}

void* vmRealloc(VMEngine* vm, void* block, size_t size) {
  void* grown = vmTryRealloc(vm, block, size);
  if (!grown) err_Internal(vm, 9009, "Memory low", nullptr);
  return grown;
}

static void heapFree(void* block) {
  BlockHeader* header = blockHeader(block);
  header->heap->liveBlocks--;
  header->heap->liveBytes -= header->size;
  header->magic = 0;
  std::free(header);
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
