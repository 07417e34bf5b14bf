// NUMLOW and NUMHIGH: the low and the second byte of a number, or of a
// hexadecimal number written in a string.
#include <cstdio>

#include "frame/frame.h"

namespace {

// A number-compatible parameter is read as an integer, a string with "%x";
// anything else is 0.
uint32_t numberOrHex(VMEngine* vm) {
  if (paramIsNumCompat(vm, 1)) return static_cast<uint32_t>(paramGetNI(vm, 1));
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  unsigned int value = 0;
  if (text) std::sscanf(itemStrPtr(text), "%x", &value);
  return value;
}

}  // namespace

KOVO_FUNC(NUMLOW) {
  itemPutNI(vm, returnItem(vm), static_cast<int32_t>(numberOrHex(vm) & 0xFF));
}

KOVO_FUNC(NUMHIGH) {
  itemPutNI(vm, returnItem(vm), static_cast<int32_t>((numberOrHex(vm) >> 8) & 0xFF));
}
