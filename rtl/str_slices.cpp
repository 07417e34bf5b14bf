// Length and slices: LEN, LEFT, RIGHT, SUBSTR.
#include "str_result.h"

namespace {

// A number or a date; unlike most number arguments, a one-byte string is no
// count for SUBSTR.
bool isCount(const Item* item) {
  return item && ((item->type & HB_IT_NUMCOMPAT) || item->type == HB_IT_DATE);
}

}  // namespace

KOVO_FUNC(LEN) {
  const Item* value = paramResolved(vm, 1);
  if (value) {
    if (value->type & HB_IT_STRING) {
      itemPutNL(vm, returnItem(vm), static_cast<int32_t>(itemStrLen(value)));
      return;
    }
    if (value->type & HB_IT_ARRAY) {
      itemPutNL(vm, returnItem(vm), static_cast<int32_t>(itemArrayLen(value)));
      return;
    }
    if (value->type & HB_IT_HASH) {
      itemPutNL(vm, returnItem(vm), static_cast<int32_t>(value->item.asHash.value->length));
      return;
    }
  }
  argError(vm, 1111, "LEN", 1);
}

KOVO_FUNC(LEFT) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  if (!text || !paramIsNumCompat(vm, 2)) return argError(vm, 1124, "LEFT", 2);
  returnSlice(vm, text, 0, clampCount(paramGetNL(vm, 2), itemStrLen(text)));
}

KOVO_FUNC(RIGHT) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  if (!text || !paramIsNumCompat(vm, 2)) return returnEmptyText(vm);
  uint32_t count = clampCount(paramGetNL(vm, 2), itemStrLen(text));
  returnSlice(vm, text, itemStrLen(text) - count, count);
}

// A negative start counts from the end; start 0 is the first byte, as 1 is.
// The count is checked only when the start lies inside the string.
KOVO_FUNC(SUBSTR) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  if (!text || !paramIsNumCompat(vm, 2)) return argError(vm, 1110, "SUBSTR", 3);
  int64_t length = itemStrLen(text);
  int64_t start = paramGetNL(vm, 2);
  if (start < 0) {
    start = start + length < 0 ? 0 : start + length;
  } else if (start > 0) {
    start--;
  }
  if (start >= length) return returnEmptyText(vm);
  int64_t count = length - start;
  if (paramCount(vm) >= 3) {
    if (!isCount(paramResolved(vm, 3))) return argError(vm, 1110, "SUBSTR", 3);
    int64_t wanted = paramGetNL(vm, 3);
    if (wanted < count) count = wanted;
  }
  returnSlice(vm, text, static_cast<uint32_t>(start), count < 1 ? 0 : static_cast<uint32_t>(count));
}
