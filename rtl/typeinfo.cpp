// Type inspection: VALTYPE, TYPE, the HB_IS predicates, HB_ISNULL, HB_VALTOSTR.
#include <cstring>

#include "frame/frame.h"

namespace {

// Puts the answer of a type predicate; false when no parameter was passed.
void returnTypeTest(VMEngine* vm, bool (*test)(const Item* item)) {
  const Item* item = paramItem(vm, 1, HB_IT_ANY);
  itemPutL(vm, returnItem(vm), item != nullptr && test(item));
}

HB_TYPE lowByte(const Item* item) {
  return item->type & 0x00FF;
}

bool hasClass(const Item* item) {
  return (item->type & HB_IT_ARRAY) && item->item.asArray.value->cls != nullptr;
}

}  // namespace

KOVO_FUNC(VALTYPE) {
  itemPutC(vm, returnItem(vm), itemTypeStr(paramItem(vm, 1, HB_IT_ANY)));
}

KOVO_FUNC(HB_ISNIL) {
  const Item* item = paramItem(vm, 1, HB_IT_ANY);
  itemPutL(vm, returnItem(vm), item == nullptr || item->type == HB_IT_NIL);
}

KOVO_FUNC(HB_ISSTRING) {
  returnTypeTest(vm, [](const Item* item) {
    return (item->type & HB_IT_STRING) && !(item->type & HB_IT_MEMOFLAG);
  });
}

KOVO_FUNC(HB_ISMEMO) {
  returnTypeTest(vm, [](const Item* item) { return (item->type & HB_IT_MEMOFLAG) != 0; });
}

KOVO_FUNC(HB_ISNUMERIC) {
  returnTypeTest(vm, [](const Item* item) { return (lowByte(item) & HB_IT_NUMCOMPAT) != 0; });
}

KOVO_FUNC(HB_ISLOGICAL) {
  returnTypeTest(vm, [](const Item* item) { return lowByte(item) >= HB_IT_LOGICAL; });
}

KOVO_FUNC(HB_ISDATE) {
  returnTypeTest(vm, [](const Item* item) { return (lowByte(item) & HB_IT_DATE) != 0; });
}

KOVO_FUNC(HB_ISPOINTER) {
  returnTypeTest(vm, [](const Item* item) { return (lowByte(item) & HB_IT_POINTER) != 0; });
}

KOVO_FUNC(HB_ISHASH) {
  returnTypeTest(vm, [](const Item* item) { return (lowByte(item) & HB_IT_HASH) != 0; });
}

KOVO_FUNC(HB_ISBLOCK) {
  returnTypeTest(vm, [](const Item* item) { return (item->type & HB_IT_BLOCK) != 0; });
}

KOVO_FUNC(HB_ISARRAY) {
  returnTypeTest(vm, [](const Item* item) { return item->type >= HB_IT_ARRAY && !hasClass(item); });
}

KOVO_FUNC(HB_ISOBJECT) {
  returnTypeTest(vm, hasClass);
}

// True only for a variable that was itself passed on by reference; a plain
// value leaves nil, and so does a call without a parameter.
KOVO_FUNC(HB_ISBYREF) {
  Item* slot = paramSlot(vm, 1);
  if (!slot) return;
  if (slot->type & HB_IT_BYREF) {
    itemPutL(vm, returnItem(vm), (itemUnRefOnce(vm, slot)->type & HB_IT_BYREF) != 0);
  } else {
    itemClear(vm, returnItem(vm));
  }
}

KOVO_FUNC(HB_ISNULL) {
  const Item* item = paramItem(vm, 1, HB_IT_ANY);
  if (item && (item->type & HB_IT_STRING)) {
    itemPutL(vm, returnItem(vm), item->item.asString.length == 0);
  } else if (item && (item->type & HB_IT_ARRAY)) {
    itemPutL(vm, returnItem(vm), item->item.asArray.value->length == 0);
  } else if (item && (item->type & HB_IT_HASH)) {
    itemPutL(vm, returnItem(vm), hashLen(item) == 0);
  } else {
    argError(vm, 1111, "HB_ISNULL", 1);
  }
}

KOVO_FUNC(HB_VALTOSTR) {
  uint32_t length = 0;
  bool mustFree = false;
  char* text = itemString(vm, paramItem(vm, 1, HB_IT_ANY), &length, &mustFree);
  if (mustFree) {
    itemPutCPtr(vm, returnItem(vm), text, length);
  } else {
    itemPutCL(vm, returnItem(vm), text, length);
  }
}

KOVO_FUNC(TYPE) {
  const Item* expression = paramItem(vm, 1, HB_IT_STRING);
  if (!expression) {
    argError(vm, 1121, "TYPE", 1);
    return;
  }
  const Item* flagItem = paramItem(vm, 2, HB_IT_ANY);
  uint8_t flags = (flagItem && (flagItem->type & HB_IT_INTEGER))
                      ? static_cast<uint8_t>(flagItem->item.asInteger.value & 0xFF)
                      : '@';
  itemPutC(vm, returnItem(vm), macroGetType(vm, expression, flags));
}
