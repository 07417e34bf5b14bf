// NUMLOW and NUMHIGH: the low and the second byte of a number, or of a
// hexadecimal number written in a string.
#include <cctype>

#include "frame/frame.h"
#include "hexdigits.h"

namespace {

// What scanning with "%x" reads: leading blanks, an optional sign and "0x",
// then digits of either case up to the first other character; 0 when there
// are none. The value wraps at 32 bits, so the low bytes are always those of
// the last digits.
uint32_t scannedHex(const char* text) {
  while (std::isspace(static_cast<unsigned char>(*text)))
    text++;
  bool negative = *text == '-';
  if (*text == '-' || *text == '+') text++;
  if (text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) text += 2;
  uint32_t value = 0;
  for (int digit = hexDigitValue(*text); digit >= 0; digit = hexDigitValue(*++text)) {
    value = value * 16 + static_cast<uint32_t>(digit);
  }
  return negative ? 0u - value : value;
}

// A number-compatible parameter is read as an integer, a string with "%x";
// anything else is 0.
uint32_t numberOrHex(VMEngine* vm) {
  if (paramIsNumCompat(vm, 1)) return static_cast<uint32_t>(paramGetNI(vm, 1));
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  return text ? scannedHex(itemStrPtr(text)) : 0;
}

}  // namespace

KOVO_FUNC(NUMLOW) {
  itemPutNI(vm, returnItem(vm), static_cast<int32_t>(numberOrHex(vm) & 0xFF));
}

KOVO_FUNC(NUMHIGH) {
  itemPutNI(vm, returnItem(vm), static_cast<int32_t>((numberOrHex(vm) >> 8) & 0xFF));
}
