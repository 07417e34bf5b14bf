#include "hexoperand.h"

#include "frame/frame.h"

namespace {

constexpr uint32_t MOST_OPERAND_DIGITS = 4;

// A character's digit value counts from "0" up to "9" and from "A" (0x37 + 10)
// above it, and must come out 0-15: so lower-case letters end an operand,
// while the six characters between "9" and "A" read as 3 to 9, as they
// always have.
int operandDigitValue(char c) {
  int value = c - '0';
  if (value > 9) value = c - 0x37;
  return value >= 0 && value <= 15 ? value : -1;
}

}  // namespace

uint32_t hexOperandValue(const char* text, uint32_t length) {
  uint32_t value = 0;
  uint32_t digits = length < MOST_OPERAND_DIGITS ? length : MOST_OPERAND_DIGITS;
  for (uint32_t k = 0; k < digits; k++) {
    int digit = operandDigitValue(text[length - 1 - k]);
    if (digit < 0) break;
    value |= static_cast<uint32_t>(digit) << (4 * k);
  }
  return value;
}

std::optional<uint32_t> bitOperand(VMEngine* vm, int n) {
  const Item* item = paramResolved(vm, n);
  if (itemIsNumCompat(item)) return static_cast<uint32_t>(paramGetNL(vm, n));
  if (itemIsString(item)) return hexOperandValue(itemStrPtr(item), itemStrLen(item));
  return std::nullopt;
}
