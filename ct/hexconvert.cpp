// Numbers and byte strings to and from hexadecimal text: HB_NUMTOHEX,
// HB_HEXTONUM, HB_STRTOHEX and HB_HEXTOSTR.
#include <algorithm>
#include <cstdint>

#include "frame/frame.h"
#include "kovo/hex_digits.h"

namespace {

constexpr int32_t HEX_ARGUMENT = 3012;

// A string parameter 1, or nothing after the argument error was raised.
const Item* hexTextParam(VMEngine* vm, const char* operation) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  if (!text) argError(vm, HEX_ARGUMENT, operation, 1);
  return text;
}

}  // namespace

// Numbers are written as unsigned 32-bit values; a pointer with all the
// digits of its address.
KOVO_FUNC(HB_NUMTOHEX) {
  uintptr_t value = 0;
  if (paramIsNumCompat(vm, 1)) {
    value = static_cast<uint32_t>(paramGetNL(vm, 1));
  } else if (const Item* pointer = paramItem(vm, 1, HB_IT_POINTER)) {
    value = reinterpret_cast<uintptr_t>(pointer->item.asPointer.value);
  } else {
    return argError(vm, HEX_ARGUMENT, "HB_NUMTOHEX", 1);
  }
  char digits[2 * sizeof value];
  char* start = digits + sizeof digits;
  for (; value != 0; value >>= 4)
    *--start = UPPER_HEX_DIGITS[value & 0xF];
  itemPutCL(vm, returnItem(vm), start, static_cast<uint32_t>(digits + sizeof digits - start));
}

// Any character that is no digit makes the whole number 0. The value wraps at
// 32 bits and is a long item, so HB_NUMTOHEX's text of a negative number
// reads back to that number.
KOVO_FUNC(HB_HEXTONUM) {
  const Item* text = hexTextParam(vm, "HB_HEXTONUM");
  if (!text) return;
  const char* digits = itemStrPtr(text);
  uint32_t value = 0;
  for (uint32_t i = 0; i < itemStrLen(text); i++) {
    int digit = hexDigitValue(digits[i]);
    if (digit < 0) {
      value = 0;
      break;
    }
    value = value * 16 + static_cast<uint32_t>(digit);
  }
  itemPutNL(vm, returnItem(vm), static_cast<int32_t>(value));
}

KOVO_FUNC(HB_STRTOHEX) {
  const Item* text = hexTextParam(vm, "HB_STRTOHEX");
  if (!text) return;
  uint32_t length = itemStrLen(text);
  // Twice the length must still fit the 32-bit length of a string.
  if (length > UINT32_MAX / 2)
    return argErrorGen(vm, EG_STROVERFLOW, HEX_ARGUMENT, "HB_STRTOHEX", 1);
  auto* bytes = reinterpret_cast<const unsigned char*>(itemStrPtr(text));
  auto* hex = static_cast<char*>(vmAlloc(vm, size_t{length} * 2 + 1));
  for (uint32_t i = 0; i < length; i++) {
    hex[2 * i] = UPPER_HEX_DIGITS[bytes[i] >> 4];
    hex[2 * i + 1] = UPPER_HEX_DIGITS[bytes[i] & 0xF];
  }
  itemPutCPtr(vm, returnItem(vm), hex, length * 2);
}

// Pairs of digits of either case; a character that is no digit counts as 0
// and an odd last character is left out.
KOVO_FUNC(HB_HEXTOSTR) {
  const Item* text = hexTextParam(vm, "HB_HEXTOSTR");
  if (!text) return;
  const char* hex = itemStrPtr(text);
  uint32_t length = itemStrLen(text) / 2;
  auto* bytes = static_cast<char*>(vmAlloc(vm, size_t{length} + 1));
  auto nibble = [](char c) { return static_cast<unsigned>(std::max(hexDigitValue(c), 0)); };
  for (uint32_t i = 0; i < length; i++)
    bytes[i] = static_cast<char>(nibble(hex[2 * i]) << 4 | nibble(hex[2 * i + 1]));
  itemPutCPtr(vm, returnItem(vm), bytes, length);
}
