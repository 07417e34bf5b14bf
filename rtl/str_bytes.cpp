// Byte access: STRPEEK, STRPOKE, HB_STRING2POINTER, HB_POINTER2STRING.
#include <cstring>

#include "str_result.h"

namespace {

// Positions 1 up to the length less one: the last byte stays out of reach, as
// programs written against these functions rely on.
bool reachable(int32_t position, uint32_t length) {
  return position > 0 && static_cast<uint32_t>(position) < length;
}

}  // namespace

KOVO_FUNC(STRPEEK) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  if (!text || !paramIsNumCompat(vm, 2)) return argError(vm, 1099, "STRPEEK", 2);
  int32_t position = paramGetNL(vm, 2);
  int32_t code = 0;
  if (reachable(position, itemStrLen(text))) {
    code = static_cast<unsigned char>(itemStrPtr(text)[position - 1]);
  }
  itemPutNI(vm, returnItem(vm), code);
}

KOVO_FUNC(STRPOKE) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  if (!text || !paramIsNumCompat(vm, 2) || !paramIsNumCompat(vm, 3)) {
    return argError(vm, 1099, "STRPOKE", 3);
  }
  int32_t position = paramGetNL(vm, 2);
  uint32_t length = itemStrLen(text);
  if (!reachable(position, length)) return itemReturn(vm, text);
  char* buffer = newText(vm, length);
  std::memcpy(buffer, itemStrPtr(text), length);
  buffer[position - 1] = static_cast<char>(paramGetNL(vm, 3) & 0xFF);
  returnText(vm, buffer, length);
}

// The address stays valid only while the string it came from lives.
KOVO_FUNC(HB_STRING2POINTER) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  if (!text) return argError(vm, 1099, "HB_String2Pointer", 1);
  itemPutPtr(vm, returnItem(vm), const_cast<char*>(itemStrPtr(text)));
}

// The result refers to the bytes at the address without copying them: up to
// the first zero byte, or as many as a numeric length asks for (none for a
// negative one). A nil length counts as no length.
KOVO_FUNC(HB_POINTER2STRING) {
  const Item* pointer = paramItem(vm, 1, HB_IT_POINTER);
  const Item* length = paramResolved(vm, 2);
  bool hasLength = length && length->type != HB_IT_NIL;
  if (!pointer || (hasLength && !itemIsNumCompat(length))) {
    return argError(vm, 1099, "HB_Pointer2String", 2);
  }
  auto* text = static_cast<const char*>(pointer->item.asPointer.value);
  if (!hasLength) {
    itemPutCStatic(vm, returnItem(vm), text);
    return;
  }
  int32_t count = paramGetNL(vm, 2);
  itemPutCRawStatic(vm, returnItem(vm), text, count > 0 ? static_cast<uint32_t>(count) : 0);
}
