// Arrays and hashes, shared by reference between the items that hold them.
#include <cstring>

#include "heap.h"
#include "internals.h"
#include "kovo/host.h"

namespace {

BaseArray* arrayOf(const Item* item) {
  return (item && (item->type & HB_IT_ARRAY)) ? item->item.asArray.value : nullptr;
}

BaseHash* hashOf(const Item* item) {
  return (item && (item->type & HB_IT_HASH)) ? item->item.asHash.value : nullptr;
}

Item* elementAt(const Item* array, uint32_t index) {
  BaseArray* base = arrayOf(array);
  if (!base || index < 1 || index > base->length) return nullptr;
  return &base->items[index - 1];
}

void reserve(VMEngine* vm, BaseArray* array, uint32_t length) {
  if (length <= array->capacity) return;
  uint32_t capacity = array->capacity < 4 ? 4 : array->capacity;
  while (capacity < length)
    capacity = capacity > UINT32_MAX / 2 ? length : capacity * 2;
  Item* items = array->items;
  if (items == arrayInlineItems(array)) {
    auto* moved = static_cast<Item*>(vmAlloc(vm, size_t{capacity} * sizeof(Item)));
    std::memcpy(static_cast<void*>(moved), items, size_t{array->length} * sizeof(Item));
    array->items = moved;
  } else {
    array->items = static_cast<Item*>(vmRealloc(vm, items, size_t{capacity} * sizeof(Item)));
  }
  array->capacity = capacity;
}

bool hashKeyEquals(const Item* a, const Item* b) {
  if ((a->type & HB_IT_STRING) && (b->type & HB_IT_STRING)) {
    return a->item.asString.length == b->item.asString.length &&
           std::memcmp(a->item.asString.value, b->item.asString.value, a->item.asString.length) ==
               0;
  }
  if ((a->type & HB_IT_NUMERIC) && (b->type & HB_IT_NUMERIC)) return itemGetND(a) == itemGetND(b);
  if (a->type != b->type) return false;
  switch (a->type) {
    case HB_IT_DATE:
      return a->item.asDate.value == b->item.asDate.value;
    case HB_IT_LOGICAL:
      return (a->item.asLogical.value != 0) == (b->item.asLogical.value != 0);
    case HB_IT_POINTER:
      return a->item.asPointer.value == b->item.asPointer.value;
    default:
      return false;
  }
}

}  // namespace

BaseArray* arrayCreate(VMEngine* vm, uint32_t length) {
  auto* array =
      static_cast<BaseArray*>(vmAlloc(vm, sizeof(BaseArray) + size_t{length} * sizeof(Item)));
  array->refCount = 1;
  if (length > 0) {
    array->items = arrayInlineItems(array);
    array->capacity = length;
  }
  array->length = length;
  return array;
}

bool arrayNew(VMEngine* vm, Item* dst, uint32_t length) {
  BaseArray* array = arrayCreate(vm, length);
  itemClear(vm, dst);
  dst->type = HB_IT_ARRAY;
  dst->item.asArray.value = array;
  return true;
}

Item* itemArrayNew(VMEngine* vm, uint32_t length) {
  Item* item = itemNew(vm, nullptr);
  arrayNew(vm, item, length);
  return item;
}

bool arrayGet(VMEngine* vm, const Item* array, uint32_t index, Item* dst) {
  Item* element = elementAt(array, index);
  if (!element) {
    itemClear(vm, dst);
    return false;
  }
  itemCopy(vm, dst, element);
  return true;
}

bool arraySet(VMEngine* vm, Item* array, uint32_t index, const Item* src) {
  Item* element = elementAt(array, index);
  if (!element) return false;
  itemCopy(vm, element, src);
  return true;
}

Item* itemArrayPut(VMEngine* vm, Item* array, uint32_t index, const Item* src) {
  arraySet(vm, array, index, src);
  return array;
}

bool arrayAdd(VMEngine* vm, Item* array, const Item* src) {
  BaseArray* base = arrayOf(array);
  if (!base) return false;
  reserve(vm, base, base->length + 1);
  Item* added = &base->items[base->length++];
  added->type = HB_IT_NIL;
  itemCopy(vm, added, src);
  return true;
}

bool arrayAddForward(VMEngine* vm, Item* array, Item* src) {
  BaseArray* base = arrayOf(array);
  if (!base) return false;
  reserve(vm, base, base->length + 1);
  Item* added = &base->items[base->length++];
  added->type = HB_IT_NIL;
  itemForwardValue(vm, added, src);
  return true;
}

bool arraySetForward(VMEngine* vm, Item* array, uint32_t index, Item* src) {
  Item* element = elementAt(array, index);
  if (!element) {
    itemClear(vm, src);
    return false;
  }
  itemForwardValue(vm, element, src);
  return true;
}

bool arrayIns(VMEngine* vm, Item* array, uint32_t index) {
  BaseArray* base = arrayOf(array);
  if (!base || index < 1 || index > base->length) return false;
  // The last element falls off the end; the inserted one is nil.
  itemClear(vm, &base->items[base->length - 1]);
  std::memmove(static_cast<void*>(&base->items[index]), &base->items[index - 1],
               (base->length - index) * sizeof(Item));
  base->items[index - 1].type = HB_IT_NIL;
  return true;
}

bool arraySize(VMEngine* vm, Item* array, uint32_t length) {
  BaseArray* base = arrayOf(array);
  if (!base) return false;
  for (uint32_t i = length; i < base->length; i++)
    itemClear(vm, &base->items[i]);
  reserve(vm, base, length);
  for (uint32_t i = base->length; i < length; i++)
    base->items[i].type = HB_IT_NIL;
  base->length = length;
  return true;
}

Item* arrayClone(VMEngine* vm, const Item* array) {
  BaseArray* source = arrayOf(array);
  if (!source) return itemNew(vm, array);
  Item* clone = itemArrayNew(vm, source->length);
  clone->item.asArray.value->cls = source->cls;
  for (uint32_t i = 0; i < source->length; i++) {
    const Item* element = &source->items[i];
    if (element->type & HB_IT_ARRAY) {
      Item* inner = arrayClone(vm, element);
      arraySetForward(vm, clone, i + 1, inner);
      xItemRelease(vm, inner);
    } else {
      arraySet(vm, clone, i + 1, element);
    }
  }
  return clone;
}

Item* arrayGetItemPtr(const Item* array, uint32_t index) {
  return elementAt(array, index);
}

int32_t arrayGetNI(const Item* array, uint32_t index) {
  return itemGetNI(elementAt(array, index));
}

const char* arrayGetCPtr(const Item* array, uint32_t index) {
  Item* element = elementAt(array, index);
  return (element && (element->type & HB_IT_STRING)) ? element->item.asString.value : "";
}

void* arrayGetPtr(const Item* array, uint32_t index) {
  Item* element = elementAt(array, index);
  return (element && element->type == HB_IT_POINTER) ? element->item.asPointer.value : nullptr;
}

// ---- Hashes ------------------------------------------------------------------------

bool hashNew(VMEngine* vm, Item* dst) {
  auto* hash = static_cast<BaseHash*>(vmAlloc(vm, sizeof(BaseHash)));
  hash->refCount = 1;
  itemClear(vm, dst);
  dst->type = HB_IT_HASH;
  dst->item.asHash.value = hash;
  return true;
}

uint32_t hashLen(const Item* hash) {
  BaseHash* base = hashOf(hash);
  return base ? base->length : 0;
}

Item* hashGetKeyAt(const Item* hash, uint32_t position) {
  BaseHash* base = hashOf(hash);
  if (!base || position < 1 || position > base->length) return nullptr;
  return &base->pairs[position - 1].key;
}

Item* hashGetValueAt(const Item* hash, uint32_t position) {
  BaseHash* base = hashOf(hash);
  if (!base || position < 1 || position > base->length) return nullptr;
  return &base->pairs[position - 1].value;
}

Item* hashGetItemPtr(const Item* hash, const Item* key) {
  BaseHash* base = hashOf(hash);
  if (!base || !key) return nullptr;
  for (uint32_t i = 0; i < base->length; i++) {
    if (hashKeyEquals(&base->pairs[i].key, key)) return &base->pairs[i].value;
  }
  return nullptr;
}

bool hashAddForward(VMEngine* vm, Item* hash, uint32_t, Item* key, Item* value) {
  BaseHash* base = hashOf(hash);
  if (!base) return false;
  if (Item* existing = hashGetItemPtr(hash, key)) {
    itemForwardValue(vm, existing, value);
    itemClear(vm, key);
    return true;
  }
  if (base->length == base->capacity) {
    uint32_t capacity = base->capacity < 4 ? 4 : base->capacity * 2;
    base->pairs =
        static_cast<HashPair*>(vmRealloc(vm, base->pairs, size_t{capacity} * sizeof(HashPair)));
    base->capacity = capacity;
  }
  HashPair& pair = base->pairs[base->length++];
  pair.key.type = HB_IT_NIL;
  pair.value.type = HB_IT_NIL;
  itemForwardValue(vm, &pair.key, key);
  itemForwardValue(vm, &pair.value, value);
  return true;
}
