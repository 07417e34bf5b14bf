// The HB_BIT functions: 32-bit integers as bit patterns. Only integer and
// long items are accepted; a long operand makes a long result.
#include <optional>

#include "frame/frame.h"

namespace {

constexpr HB_TYPE INTEGER_TYPES = HB_IT_INTEGER | HB_IT_LONG;

struct IntegerOperands {
  uint32_t first;
  uint32_t second;
  bool anyLong;
};

// The operands of a one- or two-operand function. A one-operand function
// lists its parameter twice in the error, as programs expect two arguments
// there. Nothing once the error has been raised; its substitute is the result.
std::optional<IntegerOperands> integerOperands(VMEngine* vm, const char* operation, int operands) {
  const int second = operands == 2 ? 2 : 1;
  const Item* a = paramItem(vm, 1, INTEGER_TYPES);
  const Item* b = paramItem(vm, second, INTEGER_TYPES);
  if (!a || !b) {
    err_RT_BASE_SubstR(vm, EG_ARG, 1089, "Non-integer parameters", operation, 2, paramError(vm, 1),
                       paramError(vm, second));
    return std::nullopt;
  }
  return IntegerOperands{static_cast<uint32_t>(itemGetNL(a)), static_cast<uint32_t>(itemGetNL(b)),
                         ((a->type | b->type) & HB_IT_LONG) != 0};
}

uint32_t bitOf(uint32_t bitNumber) {
  return 1u << (bitNumber & 31);
}

void returnBits(VMEngine* vm, const char* operation, int operands,
                uint32_t (*compute)(uint32_t, uint32_t)) {
  std::optional<IntegerOperands> in = integerOperands(vm, operation, operands);
  if (!in) return;
  auto result = static_cast<int32_t>(compute(in->first, in->second));
  if (in->anyLong) {
    itemPutNL(vm, returnItem(vm), result);
  } else {
    itemPutNI(vm, returnItem(vm), result);
  }
}

}  // namespace

KOVO_FUNC(HB_BITAND) {
  returnBits(vm, "HB_BITAND", 2, [](uint32_t a, uint32_t b) { return a & b; });
}

KOVO_FUNC(HB_BITOR) {
  returnBits(vm, "HB_BITOR", 2, [](uint32_t a, uint32_t b) { return a | b; });
}

KOVO_FUNC(HB_BITXOR) {
  returnBits(vm, "HB_BITXOR", 2, [](uint32_t a, uint32_t b) { return a ^ b; });
}

KOVO_FUNC(HB_BITNOT) {
  returnBits(vm, "HB_BITNOT", 1, [](uint32_t a, uint32_t) { return ~a; });
}

KOVO_FUNC(HB_BITSET) {
  returnBits(vm, "HB_BITSET", 2, [](uint32_t a, uint32_t n) { return a | bitOf(n); });
}

KOVO_FUNC(HB_BITRESET) {
  returnBits(vm, "HB_BITRESET", 2, [](uint32_t a, uint32_t n) { return a & ~bitOf(n); });
}

// Its argument errors carry the operation "HB_BITRESET": programs test for
// that name.
KOVO_FUNC(HB_BITSHIFT) {
  returnBits(vm, "HB_BITRESET", 2, [](uint32_t a, uint32_t n) {
    return static_cast<int32_t>(n) >= 0 ? a << (n & 31) : a >> ((0u - n) & 31);
  });
}

KOVO_FUNC(HB_BITISSET) {
  std::optional<IntegerOperands> in = integerOperands(vm, "HB_BITISSET", 2);
  if (in) itemPutL(vm, returnItem(vm), (in->first & bitOf(in->second)) != 0);
}
