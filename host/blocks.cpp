// Code blocks: the host only holds them and runs the embedder's evaluator.
#include <cstdarg>
#include <vector>

#include "heap.h"
#include "internals.h"
#include "kovo/host_embed.h"

Block* blockNew(VMEngine* vm, BlockEval eval, BlockRelease release, void* code) {
  auto* block = static_cast<Block*>(vmAlloc(vm, sizeof(Block)));
  block->refCount = 1;
  block->eval = eval;
  block->release = release;
  block->code = code;
  return block;
}

Item* itemPutBlock(VMEngine* vm, Item* dst, Block* block) {
  itemClear(vm, dst);
  dst->type = HB_IT_BLOCK;
  dst->item.asBlock.value = block;
  return dst;
}

Item* vmEvalBlockArgs(VMEngine* vm, const Item* block, uint32_t argc, Item** argv) {
  if (!block || !(block->type & HB_IT_BLOCK)) {
    itemClear(vm, &vm->stack.Return);
    return &vm->stack.Return;
  }
  // The block and the result live in stack slots while the block runs: the
  // block may replace the item it came from, and calls inside it use the
  // return item.
  itemCopy(vm, vmPush(vm), block);
  ptrdiff_t resultSlot = vm->stack.pos - vm->stack.items;
  vmPush(vm);
  Block* running = block->item.asBlock.value;
  running->eval(vm, running, argc, argv, vm->stack.items[resultSlot]);
  itemForwardValue(vm, &vm->stack.Return, vm->stack.items[resultSlot]);
  itemClear(vm, *--vm->stack.pos);
  itemClear(vm, *--vm->stack.pos);
  return &vm->stack.Return;
}

std::vector<Item*> collectItems(uint32_t argc, va_list args) {
  std::vector<Item*> items(argc);
  for (uint32_t i = 0; i < argc; i++)
    items[i] = va_arg(args, Item*);
  return items;
}

Item* vmEvalBlockV(VMEngine* vm, const Item* block, uint32_t argc, ...) {
  GATHER_ITEMS(argv, argc);
  return vmEvalBlockArgs(vm, block, argc, argv.data());
}

Item* itemDo(VMEngine* vm, const Item* block, uint32_t argc, ...) {
  GATHER_ITEMS(argv, argc);
  return itemNew(vm, vmEvalBlockArgs(vm, block, argc, argv.data()));
}
