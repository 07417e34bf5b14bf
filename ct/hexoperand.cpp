#include "hexoperand.h"

#include "frame/frame.h"
#include "hexdigits.h"

namespace {

constexpr uint32_t MOST_OPERAND_DIGITS = 4;

// Lower-case digits end an operand like any other character.
int upperHexDigitValue(char c) {
  return c >= 'a' && c <= 'f' ? -1 : hexDigitValue(c);
}

}  // namespace

uint32_t hexOperandValue(const char* text, uint32_t length) {
  uint32_t value = 0;
  uint32_t digits = length < MOST_OPERAND_DIGITS ? length : MOST_OPERAND_DIGITS;
  for (uint32_t k = 0; k < digits; k++) {
    int digit = upperHexDigitValue(text[length - 1 - k]);
    if (digit < 0) break;
    value |= static_cast<uint32_t>(digit) << (4 * k);
  }
  return value;
}

std::optional<uint32_t> bitOperand(VMEngine* vm, int n) {
  const Item* item = paramResolved(vm, n);
  if (itemIsString(item)) return hexOperandValue(itemStrPtr(item), itemStrLen(item));
  if (itemIsNumCompat(item)) return static_cast<uint32_t>(paramGetNL(vm, n));
  return std::nullopt;
}
