#include "call_checks.h"

#include <cstdio>
#include <cstdlib>
#include <unordered_set>

#include "host/heap.h"

namespace {

[[noreturn]] void broken(const char* function, const char* what) {
  std::fprintf(stderr, "after %s: %s\n", function, what);
  std::abort();
}

class ItemChecker {
 public:
  explicit ItemChecker(const char* function) : function_(function) {}

  void check(const Item* item, int depth) {
    if (depth > 1000) broken(function_, "items nested beyond 1000 levels");
    HB_TYPE type = item->type;
    if (type & HB_IT_STRING) {
      if ((type & ~HB_IT_MEMOFLAG) != HB_IT_STRING)
        broken(function_, "string with other type bits");
      checkString(item);
      return;
    }
    switch (type) {
      case HB_IT_NIL:
      case HB_IT_POINTER:
      case HB_IT_INTEGER:
      case HB_IT_LONG:
      case HB_IT_DOUBLE:
      case HB_IT_DATE:
      case HB_IT_COUNTER:
      case HB_IT_LOGICAL:
        return;
      case HB_IT_ARRAY:
        checkArray(item->item.asArray.value, depth);
        return;
      case HB_IT_HASH:
        checkHash(item->item.asHash.value, depth);
        return;
      case HB_IT_BLOCK: {
        const Block* block = item->item.asBlock.value;
        if (!block || block->refCount == 0 || !block->eval) broken(function_, "dead block");
        return;
      }
      case HB_IT_BYREF:
        checkCellAt(item->item.asRefer.value, depth);
        return;
      default:
        broken(function_, "item of no valid type");
    }
  }

  void checkCellAt(const ValueCell* cell, int depth) {
    if (!cell || cell->refCount == 0) broken(function_, "reference to a dead variable");
    if (!seen_.insert(cell).second) return;
    check(&cell->value, depth + 1);
  }

 private:
  void checkString(const Item* item) {
    const char* text = item->item.asString.value;
    uint32_t length = item->item.asString.length;
    if (!text) broken(function_, "string without bytes");
    if (item->item.asString.owned) {
      const BlockHeader* header = blockHeader(const_cast<char*>(text));
      if (header->refCount == 0) broken(function_, "string in a freed block");
      if (header->size <= length) broken(function_, "string longer than its block");
    }
    if (text[length] != '\0') broken(function_, "string without its terminating zero");
  }

  void checkArray(const BaseArray* array, int depth) {
    if (!array || array->refCount == 0) broken(function_, "dead array");
    if (!seen_.insert(array).second) return;
    if (array->length > array->capacity) broken(function_, "array longer than its capacity");
    if (array->length > 0 && !array->items) broken(function_, "array without elements");
    for (uint32_t i = 0; i < array->length; i++)
      check(&array->items[i], depth + 1);
  }

  void checkHash(const BaseHash* hash, int depth) {
    if (!hash || hash->refCount == 0) broken(function_, "dead hash");
    if (!seen_.insert(hash).second) return;
    if (hash->length > hash->capacity) broken(function_, "hash longer than its capacity");
    for (uint32_t i = 0; i < hash->length; i++) {
      check(&hash->pairs[i].key, depth + 1);
      check(&hash->pairs[i].value, depth + 1);
    }
  }

  const char* function_;
  std::unordered_set<const void*> seen_;
};

}  // namespace

StackMark markStack(const VMEngine* vm) {
  return {vm->stack.pos - vm->stack.items, vm->stack.pBase - vm->stack.items};
}

void checkStack(const VMEngine* vm, const StackMark& mark, const char* function) {
  StackMark now = markStack(vm);
  if (now.top != mark.top) broken(function, "stack not back at its height");
  if (now.base != mark.base) broken(function, "frame base not restored");
}

void unwindStack(VMEngine* vm, const StackMark& mark) {
  VMStack& stack = vm->stack;
  while (stack.pos > stack.items + mark.top)
    itemClear(vm, *--stack.pos);
  stack.pBase = stack.items + mark.base;
  itemClear(vm, &stack.Return);
}

void checkItem(const Item* item, const char* function) {
  ItemChecker(function).check(item, 0);
}

void checkCell(const ValueCell* cell, const char* function) {
  ItemChecker(function).checkCellAt(cell, 0);
}
