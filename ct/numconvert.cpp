// Numbers in other forms: temperatures, the raw bytes of a double, a value's
// byte string, and the binary mantissa and exponent.
#include <cfloat>
#include <cmath>
#include <cstring>

#include "frame/frame.h"

namespace {

constexpr uint32_t DOUBLE_SIZE = sizeof(double);

// A numeric-compatible parameter as a double; 0 for anything else.
double numberParam(VMEngine* vm, int n) {
  return paramIsNumCompat(vm, n) ? paramGetND(vm, n) : 0.0;
}

// The bytes of the double in memory order, NaN payloads and the sign of zero
// included.
void returnDoubleBytes(VMEngine* vm, double value) {
  char bytes[DOUBLE_SIZE];
  std::memcpy(bytes, &value, DOUBLE_SIZE);
  itemPutCL(vm, returnItem(vm), bytes, DOUBLE_SIZE);
}

// A temperature conversion of parameter 1; any other parameter is the
// substitution error, with 0.0 when nothing is substituted.
void returnConverted(VMEngine* vm, int32_t subCode, const char* operation,
                     double (*convert)(double)) {
  if (!paramIsNumCompat(vm, 1)) {
    if (!ctArgErrorSubst(vm, subCode, operation, 1)) itemPutND(vm, returnItem(vm), 0.0);
    return;
  }
  itemPutND(vm, returnItem(vm), convert(paramGetND(vm, 1)));
}

// x = mantissa * 2^exponent with the mantissa in [1, 2) in magnitude, as
// halving or doubling x until it lands there gives. Zero, infinities and NaN
// keep their value with exponent 0, where halving would never end.
struct Scaled {
  double mantissa;
  int exponent;
};

Scaled scaledParam(VMEngine* vm) {
  double x = numberParam(vm, 1);
  if (x == 0.0) return {0.0, 0};
  if (!std::isfinite(x)) return {x, 0};
  int exponent = 0;
  double half = std::frexp(x, &exponent);  // half lies in [0.5, 1)
  return {half * 2.0, exponent - 1};
}

}  // namespace

KOVO_FUNC(CELSIUS) {
  returnConverted(vm, 4523, "CELSIUS",
                  [](double fahrenheit) { return (fahrenheit - 32.0) * 0.5555555555555556; });
}

KOVO_FUNC(FAHRENHEIT) {
  returnConverted(vm, 4583, "FAHRENHEIT", [](double celsius) { return celsius * 1.8 + 32.0; });
}

KOVO_FUNC_AS(ctInfinity, "INFINITY") {
  constexpr uint64_t LEGACY_LARGE = 0x4414563918244F40;  // about 9.3787e19
  double legacy = 0.0;
  std::memcpy(&legacy, &LEGACY_LARGE, DOUBLE_SIZE);
  bool wantsLargest = paramIsTrue(vm, 1);
  itemPutND(vm, returnItem(vm), wantsLargest ? DBL_MAX : legacy);
}

KOVO_FUNC(FTOC) {
  returnDoubleBytes(vm, numberParam(vm, 1));
}

KOVO_FUNC(CTOF) {
  const Item* bytes = paramItem(vm, 1, HB_IT_STRING);
  double value = 0.0;
  if (bytes && itemStrLen(bytes) >= DOUBLE_SIZE)
    std::memcpy(&value, itemStrPtr(bytes), DOUBLE_SIZE);
  itemPutND(vm, returnItem(vm), value);
}

KOVO_FUNC(XTOC) {
  const Item* item = paramItem(vm, 1, HB_IT_ANY);
  HB_TYPE type = item ? item->type : HB_IT_NIL;
  if (type & HB_IT_STRING) {
    itemPutCL(vm, returnItem(vm), itemStrPtr(item), itemStrLen(item));
  } else if (type == HB_IT_DATE) {
    char text[9];
    itemPutCL(vm, returnItem(vm), dateDecStr(text, item->item.asDate.value), 8);
  } else if (type & (HB_IT_NUMERIC | HB_IT_COUNTER)) {
    returnDoubleBytes(vm, itemGetND(item));
  } else if (type == HB_IT_LOGICAL) {
    itemPutCL(vm, returnItem(vm), item->item.asLogical.value ? "T" : "F", 1);
  } else {
    returnEmptyText(vm);
  }
}

KOVO_FUNC(MANTISSA) {
  itemPutND(vm, returnItem(vm), scaledParam(vm).mantissa);
}

KOVO_FUNC(EXPONENT) {
  itemPutNI(vm, returnItem(vm), scaledParam(vm).exponent);
}
