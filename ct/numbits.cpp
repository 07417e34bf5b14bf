// The bit functions of the text tools: the 16-bit family (NUMAND ... NUMMIRR),
// the bit-width family (NUMANDX ... NUMMIRRX), SETBIT, CLEARBIT and ISBIT.
// Operands are numbers or hexadecimal strings. Nothing is raised: an operand
// of another type gives -1, or nil in the bit-width family.
#include <optional>

#include "frame/frame.h"
#include "hexoperand.h"

namespace {

using BitOperation = uint32_t (*)(uint32_t, uint32_t);
using Bits = std::optional<uint32_t>;

constexpr uint32_t BYTE_WIDTH = 8;
constexpr uint32_t SHORT_WIDTH = 16;
constexpr uint32_t FULL_WIDTH = 32;
constexpr int32_t INVALID_OPERAND = -1;

uint32_t andBits(uint32_t a, uint32_t b) {
  return a & b;
}
uint32_t orBits(uint32_t a, uint32_t b) {
  return a | b;
}
uint32_t xorBits(uint32_t a, uint32_t b) {
  return a ^ b;
}
uint32_t notBits(uint32_t a, uint32_t) {
  return ~a;
}

uint32_t lowBits(uint32_t width) {
  return width >= FULL_WIDTH ? UINT32_MAX : (1u << width) - 1;
}

Bits maskedOperand(VMEngine* vm, int n, uint32_t mask) {
  Bits value = bitOperand(vm, n);
  if (value) *value &= mask;
  return value;
}

// Folds the operands of parameters first..last from the left, each masked.
// A single operand is folded with 0, which is how the complement works.
Bits foldOperands(VMEngine* vm, int first, int last, BitOperation operation, uint32_t mask) {
  Bits value = maskedOperand(vm, first, mask);
  if (!value) return value;
  if (last <= first) return operation(*value, 0) & mask;
  for (int n = first + 1; n <= last; n++) {
    Bits operand = maskedOperand(vm, n, mask);
    if (!operand) return operand;
    *value = operation(*value, *operand);
  }
  return *value & mask;
}

// The value of parameter n with its low `width` bits rotated left by the
// count in parameter n + 1; the bits above the width keep their value.
Bits rotated(VMEngine* vm, int n, uint32_t mask, uint32_t width) {
  Bits value = maskedOperand(vm, n, mask);
  Bits count = maskedOperand(vm, n + 1, mask);
  if (!value || !count) return std::nullopt;
  if (width == 0) return *value;
  uint32_t low = lowBits(width);
  uint32_t bits = *value & low;
  uint32_t steps = *count % width;
  if (steps != 0) bits = ((bits << steps) | (bits >> (width - steps))) & low;
  return (*value & ~low) | bits;
}

// The value of parameter n with its low `width` bits in reverse order; the
// bits above the width keep their value.
Bits mirrored(VMEngine* vm, int n, uint32_t mask, uint32_t width) {
  Bits value = maskedOperand(vm, n, mask);
  if (!value) return value;
  uint32_t reversed = 0;
  for (uint32_t bit = 0; bit < width; bit++) {
    if (*value & (1u << bit)) reversed |= 1u << (width - 1 - bit);
  }
  return (*value & ~lowBits(width)) | reversed;
}

void returnBitsOrInvalid(VMEngine* vm, Bits result) {
  itemPutNL(vm, returnItem(vm), result ? static_cast<int32_t>(*result) : INVALID_OPERAND);
}

// The width of the bit-width family: parameter 1 when given and not 0, taken
// modulo 32 above 32 (so a negative width counts as its unsigned value);
// otherwise 32.
uint32_t chosenWidth(VMEngine* vm) {
  auto width = paramIsNumCompat(vm, 1) ? static_cast<uint32_t>(paramGetNI(vm, 1)) : 0u;
  if (width == 0) return FULL_WIDTH;
  return width > FULL_WIDTH ? width % FULL_WIDTH : width;
}

// Bit (width - 1) decides every bit above the width; width 0 leaves no bits.
int32_t signExtended(uint32_t value, uint32_t width) {
  if (width == 0) return 0;
  uint32_t low = lowBits(width);
  bool negative = (value & (1u << (width - 1))) != 0;
  return static_cast<int32_t>(negative ? value | ~low : value & low);
}

void returnAtWidth(VMEngine* vm, Bits result, uint32_t width) {
  if (result) {
    itemPutNL(vm, returnItem(vm), signExtended(*result, width));
  } else {
    itemClear(vm, returnItem(vm));
  }
}

void returnFoldAtWidth(VMEngine* vm, int last, BitOperation operation) {
  uint32_t width = chosenWidth(vm);
  returnAtWidth(vm, foldOperands(vm, 2, last, operation, lowBits(width)), width);
}

// Parameter 1 with one bit set or cleared. Every bit number in parameters
// 2..n must be 1-32, and each is applied to parameter 1 as passed, so only
// the last one shows in the result, as programs have always seen it.
Bits withLastBit(VMEngine* vm, bool set) {
  Bits value = bitOperand(vm, 1);
  int count = paramCount(vm);
  if (!value || count < 2) return std::nullopt;
  uint32_t result = *value;
  for (int n = 2; n <= count; n++) {
    int32_t bitNumber = paramIsNumCompat(vm, n) ? paramGetNI(vm, n) : 0;
    if (bitNumber < 1 || bitNumber > 32) return std::nullopt;
    uint32_t bit = 1u << (bitNumber - 1);
    result = set ? *value | bit : *value & ~bit;
  }
  return result;
}

}  // namespace

KOVO_FUNC(NUMAND) {
  returnBitsOrInvalid(vm, foldOperands(vm, 1, paramCount(vm), andBits, lowBits(SHORT_WIDTH)));
}

KOVO_FUNC(NUMOR) {
  returnBitsOrInvalid(vm, foldOperands(vm, 1, paramCount(vm), orBits, lowBits(SHORT_WIDTH)));
}

// Always two operands: a third one is ignored.
KOVO_FUNC(NUMXOR) {
  returnBitsOrInvalid(vm, foldOperands(vm, 1, 2, xorBits, lowBits(SHORT_WIDTH)));
}

KOVO_FUNC(NUMNOT) {
  returnBitsOrInvalid(vm, foldOperands(vm, 1, 1, notBits, lowBits(SHORT_WIDTH)));
}

KOVO_FUNC(NUMROL) {
  uint32_t width = paramIsTrue(vm, 3) ? BYTE_WIDTH : SHORT_WIDTH;
  returnBitsOrInvalid(vm, rotated(vm, 1, lowBits(SHORT_WIDTH), width));
}

KOVO_FUNC(NUMMIRR) {
  uint32_t width = paramIsTrue(vm, 2) ? BYTE_WIDTH : SHORT_WIDTH;
  returnBitsOrInvalid(vm, mirrored(vm, 1, lowBits(SHORT_WIDTH), width));
}

KOVO_FUNC(NUMANDX) {
  returnFoldAtWidth(vm, paramCount(vm), andBits);
}

KOVO_FUNC(NUMORX) {
  returnFoldAtWidth(vm, paramCount(vm), orBits);
}

// The width and always two operands.
KOVO_FUNC(NUMXORX) {
  returnFoldAtWidth(vm, 3, xorBits);
}

KOVO_FUNC(NUMNOTX) {
  returnFoldAtWidth(vm, 2, notBits);
}

KOVO_FUNC(NUMROLX) {
  uint32_t width = chosenWidth(vm);
  returnAtWidth(vm, rotated(vm, 2, lowBits(width), width), width);
}

KOVO_FUNC(NUMMIRRX) {
  uint32_t width = chosenWidth(vm);
  returnAtWidth(vm, mirrored(vm, 2, lowBits(width), width), width);
}

KOVO_FUNC(SETBIT) {
  returnBitsOrInvalid(vm, withLastBit(vm, true));
}

KOVO_FUNC(CLEARBIT) {
  returnBitsOrInvalid(vm, withLastBit(vm, false));
}

KOVO_FUNC(ISBIT) {
  Bits value = bitOperand(vm, 1);
  int32_t bitNumber = paramIsNumCompat(vm, 2) ? paramGetNI(vm, 2) : 0;
  bool set = value && bitNumber >= 1 && bitNumber <= 32 && (*value & (1u << (bitNumber - 1)));
  itemPutL(vm, returnItem(vm), set);
}
