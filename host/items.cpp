// Item lifetimes, the put operations and the value readers.
#include <cstring>
#include <vector>

#include "heap.h"
#include "internals.h"
#include "kovo/host.h"
#include "kovo/numconv.h"

namespace {

void releaseCell(ValueCell* cell);
void destroyArrays(BaseArray* first);
void destroyHash(BaseHash* hash);

// Releases a payload, but hands arrays that die with it to `dying` instead of
// destroying them at once, so that deep nesting does not recurse.
void releaseInto(Item* item, std::vector<BaseArray*>* dying) {
  HB_TYPE type = item->type;
  if (type & HB_IT_STRING) {
    if (item->item.asString.owned) heapRelease(item->item.asString.value);
  } else if (type & HB_IT_ARRAY) {
    BaseArray* array = item->item.asArray.value;
    if (--array->refCount == 0) {
      if (dying) {
        dying->push_back(array);
      } else {
        destroyArrays(array);
      }
    }
  } else if (type & HB_IT_HASH) {
    BaseHash* hash = item->item.asHash.value;
    if (--hash->refCount == 0) destroyHash(hash);
  } else if (type & HB_IT_BLOCK) {
    Block* block = item->item.asBlock.value;
    if (--block->refCount == 0) {
      if (block->release) block->release(block);
      heapRelease(block);
    }
  } else if (type & HB_IT_BYREF) {
    releaseCell(item->item.asRefer.value);
  } else if (type & HB_IT_ELEMREF) {
    BaseArray* array = item->item.asElemRef.array;
    if (--array->refCount == 0) destroyArrays(array);
  }
}

void destroyArrays(BaseArray* first) {
  std::vector<BaseArray*> dying{first};
  while (!dying.empty()) {
    BaseArray* array = dying.back();
    dying.pop_back();
    for (uint32_t i = 0; i < array->length; i++)
      releaseInto(&array->items[i], &dying);
    if (array->items && array->items != arrayInlineItems(array)) heapRelease(array->items);
    heapRelease(array);
  }
}

void destroyHash(BaseHash* hash) {
  for (uint32_t i = 0; i < hash->length; i++) {
    itemReleasePayload(&hash->pairs[i].key);
    itemReleasePayload(&hash->pairs[i].value);
  }
  if (hash->pairs) heapRelease(hash->pairs);
  heapRelease(hash);
}

void releaseCell(ValueCell* cell) {
  if (--cell->refCount == 0) {
    itemReleasePayload(&cell->value);
    heapRelease(cell);
  }
}

const char EMPTY_TEXT[] = "";

int defaultIntWidth(int64_t value) {
  return value < -999999999 ? 20 : 10;
}

int defaultDoubleWidth(double value) {
  return (value >= 10000000000.0 || value <= -1000000000.0) ? 20 : 10;
}

// Releases what dst held and gives it a new type; the caller fills the payload.
Item* retype(Item* dst, HB_TYPE type) {
  itemReleasePayload(dst);
  dst->type = type;
  return dst;
}

// Lets go of what dst holds, then puts. Out of line: the common put, into an
// item that holds nothing to release, then makes no call and saves no registers.
template <typename... Args>
[[gnu::noinline]] Item* releaseThenPut(Item* (*put)(Item*, Args...), Item* dst, Args... args) {
  clearItem(dst);
  return put(dst, args...);
}

// Puts a new string payload into dst after releasing the old one; the new
// payload is built first, so the text may come from dst itself.
Item* putString(Item* dst, char* text, uint32_t length, bool owned, HB_TYPE type) {
  if (holdsPayload(dst)) [[unlikely]]
    return releaseThenPut(putString, dst, text, length, owned, type);
  dst->type = type;
  dst->item.asString.value = text;
  dst->item.asString.length = length;
  dst->item.asString.owned = owned ? 1 : 0;
  return dst;
}

// Copies short texts with two overlapping moves of a fixed size instead of a
// call; longer ones with memcpy.
void copyBytes(char* to, const char* from, uint32_t length) {
  if (length > 16) {
    std::memcpy(to, from, length);
  } else if (length >= 8) {
    uint64_t head, tail;
    std::memcpy(&head, from, 8);
    std::memcpy(&tail, from + length - 8, 8);
    std::memcpy(to, &head, 8);
    std::memcpy(to + length - 8, &tail, 8);
  } else if (length >= 4) {
    uint32_t head, tail;
    std::memcpy(&head, from, 4);
    std::memcpy(&tail, from + length - 4, 4);
    std::memcpy(to, &head, 4);
    std::memcpy(to + length - 4, &tail, 4);
  } else {
    for (uint32_t i = 0; i < length; i++)
      to[i] = from[i];
  }
}

// A heap copy of the text with its zero byte. Short texts, the most frequent,
// are copied in place rather than through a call.
char* copyText(VMEngine* vm, const char* text, uint32_t length) {
  auto* buffer = static_cast<char*>(heapAllocFilled(vm->heap, size_t{length} + 1));
  if (!buffer) err_Internal(vm, 9009, "Memory low", nullptr);
  copyBytes(buffer, text, length);
  buffer[length] = '\0';
  return buffer;
}

}  // namespace

void releaseComplexPayload(Item* item) {
  releaseInto(item, nullptr);
}

void itemRetainPayload(const Item* item) {
  HB_TYPE type = item->type;
  if (type & HB_IT_STRING) {
    if (item->item.asString.owned) heapRetain(item->item.asString.value);
  } else if (type & HB_IT_ARRAY) {
    item->item.asArray.value->refCount++;
  } else if (type & HB_IT_HASH) {
    item->item.asHash.value->refCount++;
  } else if (type & HB_IT_BLOCK) {
    item->item.asBlock.value->refCount++;
  } else if (type & HB_IT_BYREF) {
    item->item.asRefer.value->refCount++;
  } else if (type & HB_IT_ELEMREF) {
    item->item.asElemRef.array->refCount++;
  }
}

// ---- Family 1 ------------------------------------------------------------------

Item* itemPutC(VMEngine* vm, Item* dst, const char* text) {
  return itemPutCL(vm, dst, text ? text : "", text ? static_cast<uint32_t>(std::strlen(text)) : 0);
}

Item* itemPutCL(VMEngine* vm, Item* dst, const char* text, uint32_t length) {
  if (length == 0) return putString(dst, const_cast<char*>(EMPTY_TEXT), 0, false, HB_IT_STRING);
  return putString(dst, copyText(vm, text, length), length, true, HB_IT_STRING);
}

Item* itemPutCPtr(VMEngine* vm, Item* dst, char* buffer, uint32_t length) {
  if (!buffer) return itemPutCL(vm, dst, "", 0);
  if (blockHeader(buffer)->size <= length) {
    buffer = static_cast<char*>(vmRealloc(vm, buffer, size_t{length} + 1));
  }
  buffer[length] = '\0';
  return putString(dst, buffer, length, true, HB_IT_STRING);
}

Item* itemPutCRaw(VMEngine* vm, Item* dst, char* buffer, uint32_t length) {
  return itemPutCPtr(vm, dst, buffer, length);
}

Item* itemPutCStatic(VMEngine*, Item* dst, const char* text) {
  const char* value = text ? text : EMPTY_TEXT;
  return putString(dst, const_cast<char*>(value), static_cast<uint32_t>(std::strlen(value)), false,
                   HB_IT_STRING);
}

Item* itemPutCRawStatic(VMEngine*, Item* dst, const char* text, uint32_t length) {
  const char* value = text ? text : EMPTY_TEXT;
  return putString(dst, const_cast<char*>(value), text ? length : 0, false, HB_IT_STRING);
}

Item* itemPutCLM(VMEngine* vm, Item* dst, const char* text, uint32_t length, int memo) {
  itemPutCL(vm, dst, text, length);
  if (memo) dst->type |= HB_IT_MEMOFLAG;
  return dst;
}

// Integer and long items have the same payload; only the type word tells them apart.
Item* putInteger(Item* dst, HB_TYPE type, int32_t value) {
  if (holdsPayload(dst)) [[unlikely]]
    return releaseThenPut(putInteger, dst, type, value);
  dst->type = type;
  dst->item.asInteger.value = value;
  dst->item.asInteger.length = static_cast<uint16_t>(defaultIntWidth(value));
  return dst;
}

Item* itemPutNI(VMEngine*, Item* dst, int32_t value) {
  return putInteger(dst, HB_IT_INTEGER, value);
}

Item* itemPutNL(VMEngine*, Item* dst, int32_t value) {
  return putInteger(dst, HB_IT_LONG, value);
}

Item* itemPutNDLen(VMEngine* vm, Item* dst, double value, int width, int decimals) {
  if (width <= 0 || width > 99) width = defaultDoubleWidth(value);
  if (decimals < 0) decimals = vm->set.value[HB_SET_DECIMALS];
  itemReleasePayload(dst);
  dst->type = HB_IT_DOUBLE;
  dst->item.asDouble.value = value;
  dst->item.asDouble.length = static_cast<uint16_t>(width);
  dst->item.asDouble.decimal = static_cast<uint16_t>(decimals);
  return dst;
}

Item* itemPutND(VMEngine* vm, Item* dst, double value) {
  return itemPutNDLen(vm, dst, value, 0, -1);
}

Item* itemPutNLen(VMEngine* vm, Item* dst, double value, int width, int decimals) {
  return itemPutNDLen(vm, dst, value, width, decimals);
}

Item* itemPutNInt(VMEngine* vm, Item* dst, int64_t value) {
  if (value >= INT32_MIN && value <= INT32_MAX) {
    return itemPutNI(vm, dst, static_cast<int32_t>(value));
  }
  return itemPutNDLen(vm, dst, static_cast<double>(value), 20, 0);
}

Item* itemPutNIntLen(VMEngine* vm, Item* dst, int64_t value, int width) {
  itemPutNInt(vm, dst, value);
  if (width > 0 && width <= 99) {
    if (dst->type == HB_IT_INTEGER) {
      dst->item.asInteger.length = static_cast<uint16_t>(width);
    } else {
      dst->item.asDouble.length = static_cast<uint16_t>(width);
    }
  }
  return dst;
}

Item* itemPutL(VMEngine*, Item* dst, bool value) {
  retype(dst, HB_IT_LOGICAL)->item.asLogical.value = value ? 1 : 0;
  return dst;
}

Item* itemPutDL(VMEngine*, Item* dst, int32_t julian) {
  retype(dst, HB_IT_DATE)->item.asDate.value = julian;
  return dst;
}

Item* itemPutDS(VMEngine* vm, Item* dst, const char* yyyymmdd) {
  return itemPutDL(vm, dst, yyyymmdd ? dateEncStr(yyyymmdd) : 0);
}

Item* itemPutD(VMEngine* vm, Item* dst, int year, int month, int day) {
  return itemPutDL(vm, dst, dateEncode(year, month, day));
}

Item* itemPutPtr(VMEngine*, Item* dst, void* pointer) {
  retype(dst, HB_IT_POINTER)->item.asPointer.value = pointer;
  return dst;
}

Item* itemPutCounter(VMEngine*, Item* dst, uint32_t value) {
  retype(dst, HB_IT_COUNTER)->item.asCounter.value = value;
  return dst;
}

void itemClear(VMEngine*, Item* item) {
  itemReleasePayload(item);
  item->type = HB_IT_NIL;
}

void itemCopy(VMEngine*, Item* dst, const Item* src) {
  if (dst == src) return;
  itemRetainPayload(src);
  itemReleasePayload(dst);
  std::memcpy(static_cast<void*>(dst), src, sizeof(Item));
}

void itemForwardValue(VMEngine*, Item* dst, Item* src) {
  if (dst == src) return;
  itemReleasePayload(dst);
  std::memcpy(static_cast<void*>(dst), src, sizeof(Item));
  src->type = HB_IT_NIL;
}

void itemReturn(VMEngine* vm, const Item* item) {
  if (item) {
    itemCopy(vm, &vm->stack.Return, item);
  } else {
    itemClear(vm, &vm->stack.Return);
  }
}

void itemReturnCopy(VMEngine* vm, const Item* item) {
  itemReturn(vm, item);
}

// ---- Family 2 --------------------------------------------------------------------

Item* itemUnRefOnce(VMEngine* vm, Item* item) {
  if (!item) return item;
  if (item->type & HB_IT_BYREF) return &item->item.asRefer.value->value;
  if (item->type & HB_IT_ELEMREF) {
    BaseArray* array = item->item.asElemRef.array;
    uint32_t index = item->item.asElemRef.index;
    if (index >= 1 && index <= array->length) return &array->items[index - 1];
    itemClear(vm, &vm->spareNil);
    return &vm->spareNil;
  }
  return item;
}

Item* itemUnRef(VMEngine* vm, Item* item) {
  while (item && (item->type & (HB_IT_BYREF | HB_IT_ELEMREF)))
    item = itemUnRefOnce(vm, item);
  return item;
}

// Exact for every integer value; a double is truncated toward zero.
int32_t itemGetNI(const Item* item) {
  // Integer items, what a numeric result nearly always is, skip the trip through a double.
  if (item && (item->type == HB_IT_INTEGER || item->type == HB_IT_LONG))
    return item->item.asInteger.value;
  if (item && item->type == HB_IT_COUNTER) return static_cast<int32_t>(item->item.asCounter.value);
  return truncToInt32(itemGetND(item));
}

int32_t itemGetNL(const Item* item) {
  return itemGetNI(item);
}

double itemGetND(const Item* item) {
  if (!item) return 0.0;
  switch (item->type) {
    case HB_IT_INTEGER:
      return item->item.asInteger.value;
    case HB_IT_LONG:
      return item->item.asLong.value;
    case HB_IT_DOUBLE:
      return item->item.asDouble.value;
    case HB_IT_COUNTER:
      return item->item.asCounter.value;
    case HB_IT_LOGICAL:
      return item->item.asLogical.value ? 1.0 : 0.0;
    default:
      return 0.0;
  }
}

bool itemGetL(const Item* item) {
  if (!item) return false;
  if (item->type == HB_IT_LOGICAL) return item->item.asLogical.value != 0;
  if (item->type & (HB_IT_NUMERIC | HB_IT_COUNTER)) return itemGetND(item) != 0.0;
  return false;
}

void itemGetNLen(const Item* item, int* width, int* decimals) {
  int w = 0;
  int d = 0;
  if (item) {
    if (item->type == HB_IT_INTEGER) {
      w = item->item.asInteger.length;
    } else if (item->type == HB_IT_LONG) {
      w = item->item.asLong.length;
    } else if (item->type == HB_IT_DOUBLE) {
      w = item->item.asDouble.length;
      d = item->item.asDouble.decimal;
    }
  }
  if (width) *width = w;
  if (decimals) *decimals = d;
}

const char* itemGetC(VMEngine*, const Item* item) {
  return (item && (item->type & HB_IT_STRING)) ? item->item.asString.value : EMPTY_TEXT;
}

char* itemGetWriteCL(VMEngine* vm, Item* item, uint32_t* length) {
  if (!item || !(item->type & HB_IT_STRING)) return nullptr;
  uint32_t len = item->item.asString.length;
  if (length) *length = len;
  char* text = item->item.asString.value;
  if (!item->item.asString.owned || blockHeader(text)->refCount > 1) {
    char* copy = copyText(vm, text, len);
    if (item->item.asString.owned) heapRelease(text);
    item->item.asString.value = copy;
    item->item.asString.owned = 1;
    text = copy;
  }
  return text;
}

const char* itemTypeStr(const Item* item) {
  while (item && (item->type & HB_IT_BYREF))
    item = &item->item.asRefer.value->value;
  if (!item) return "U";
  HB_TYPE type = item->type;
  if (type & HB_IT_ELEMREF) {
    const BaseArray* array = item->item.asElemRef.array;
    uint32_t index = item->item.asElemRef.index;
    return (index >= 1 && index <= array->length) ? itemTypeStr(&array->items[index - 1]) : "U";
  }
  if (type & HB_IT_ARRAY) return item->item.asArray.value->cls ? "O" : "A";
  if (type & HB_IT_BLOCK) return "B";
  if (type & HB_IT_STRING) return (type & HB_IT_MEMOFLAG) ? "M" : "C";
  if (type & HB_IT_SYMBOL) return "S";
  if (type & HB_IT_LOGICAL) return "L";
  if (type & HB_IT_DATE) return "D";
  if (type & (HB_IT_NUMERIC | HB_IT_COUNTER)) return "N";
  if (type & HB_IT_HASH) return "H";
  if (type & HB_IT_POINTER) return "P";
  return "U";
}

Item* itemNew(VMEngine* vm, const Item* src) {
  auto* item = static_cast<Item*>(vmAlloc(vm, sizeof(Item)));
  if (src) itemCopy(vm, item, src);
  return item;
}

Item* itemParam(VMEngine* vm, int n) {
  return itemNew(vm, itemUnRef(vm, vmParamSlot(vm, n)));
}

void xItemRelease(VMEngine* vm, Item* item) {
  if (!item) return;
  itemClear(vm, item);
  vmFree(vm, item);
}

ValueCell* cellNew(VMEngine* vm, const Item* value) {
  auto* cell = static_cast<ValueCell*>(vmAlloc(vm, sizeof(ValueCell)));
  cell->refCount = 1;
  if (value) itemCopy(vm, &cell->value, value);
  return cell;
}

void cellRelease(ValueCell* cell) {
  if (cell) releaseCell(cell);
}

Item* itemPutRef(VMEngine*, Item* dst, ValueCell* cell) {
  cell->refCount++;
  itemReleasePayload(dst);
  dst->type = HB_IT_BYREF;
  dst->item.asRefer.value = cell;
  return dst;
}

// ---- Family 3 ----------------------------------------------------------------------

namespace {

// The variable that parameter n refers to, or null when it is no reference.
Item* referencedVariable(VMEngine* vm, int n) {
  Item* slot = vmParamSlot(vm, n);
  if (n < 1 || !slot || !(slot->type & (HB_IT_BYREF | HB_IT_ELEMREF))) return nullptr;
  return itemUnRef(vm, slot);
}

}  // namespace

bool hb_storc(VMEngine* vm, const char* text, int n) {
  Item* variable = referencedVariable(vm, n);
  if (variable) itemPutC(vm, variable, text);
  return variable != nullptr;
}

bool hb_storclen(VMEngine* vm, const char* text, uint32_t length, int n) {
  Item* variable = referencedVariable(vm, n);
  if (variable) itemPutCL(vm, variable, text, length);
  return variable != nullptr;
}

bool hb_storclenAdopt(VMEngine* vm, char* buffer, uint32_t length, int n) {
  Item* variable = referencedVariable(vm, n);
  if (variable) {
    itemPutCPtr(vm, variable, buffer, length);
  } else {
    vmFree(vm, buffer);
  }
  return variable != nullptr;
}

bool hb_stornl(VMEngine* vm, int32_t value, int n) {
  Item* variable = referencedVariable(vm, n);
  if (variable) itemPutNL(vm, variable, value);
  return variable != nullptr;
}

bool hb_storl(VMEngine* vm, bool value, int n) {
  Item* variable = referencedVariable(vm, n);
  if (variable) itemPutL(vm, variable, value);
  return variable != nullptr;
}
