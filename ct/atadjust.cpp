// ATADJUST: moves a match to a target column by inserting fill characters in
// front of it, or by taking out fill characters that stand before it.
#include <cstring>

#include "ct/params.h"
#include "ct/result.h"
#include "ct/search.h"

namespace {

constexpr int32_t ATADJUST_ERROR = 3151;

// Parameter 6: the first byte of a non-empty string, the low byte of a
// number, else a space.
char fillCharacter(VMEngine* vm) {
  if (paramCount(vm) < 6) return ' ';
  Item* fill = paramItem(vm, 6, HB_IT_STRING);
  if (fill && itemStrLen(fill) > 0) return fill->item.asString.value[0];
  if (paramIsNumCompat(vm, 6)) return static_cast<char>(paramGetNI(vm, 6));
  return ' ';
}

bool allFill(const char* from, const char* to, char fill) {
  for (const char* at = from; at < to; at++) {
    if (*at != fill) return false;
  }
  return true;
}

// The working text with its match at `matchAt` moved to `target`.
void putAdjusted(VMEngine* vm, CtText working, uint32_t matchAt, uint32_t target, char fill) {
  if (matchAt > target) {
    if (!allFill(working.bytes + target, working.bytes + matchAt, fill)) {
      itemPutCL(vm, returnItem(vm), working.bytes, working.length);
      return;
    }
    auto* result = static_cast<char*>(vmAlloc(vm, size_t{working.length} + 1));
    std::memcpy(result, working.bytes, target);
    std::memcpy(result + target, working.bytes + matchAt, working.length - matchAt);
    itemPutCPtr(vm, returnItem(vm), result, working.length - (matchAt - target));
    return;
  }
  uint32_t shift = target - matchAt;
  char* result = ctTryResultBuffer(vm, uint64_t{working.length} + shift);
  if (!result) {
    ctErrorDefaultGen(vm, EG_STROVERFLOW, ATADJUST_ERROR, "ATADJUST", 6);
    itemPutCL(vm, returnItem(vm), working.bytes, working.length);
    return;
  }
  std::memcpy(result, working.bytes, matchAt);
  std::memset(result + matchAt, fill, shift);
  std::memcpy(result + target, working.bytes + matchAt, working.length - matchAt);
  itemPutCPtr(vm, returnItem(vm), result, working.length + shift);
}

}  // namespace

// Everything after the ignored prefix is the working text, and every result,
// the unchanged one included, leaves the prefix out.
KOVO_FUNC(ATADJUST) {
  CtText pattern;
  CtText text;
  if (!ctPatternAndText(vm, &pattern, &text) || !paramIsNumCompat(vm, 3)) {
    if (!ctArgErrorSubst(vm, ATADJUST_ERROR, "ATADJUST", 6)) ctReturnStringParam(vm, 2);
    return;
  }
  uint32_t ignore = ctParamUnsigned(vm, 5, 0);
  if (ignore >= text.length) {
    ctArgErrorDefault(vm, ATADJUST_ERROR, "ATADJUST", 6);
    ctReturnStringParam(vm, 2);
    return;
  }
  CtText working{text.bytes + ignore, text.length - ignore};
  uint32_t position = ctParamUnsigned(vm, 3, 0);
  if (position == 0) {
    ctArgErrorDefault(vm, ATADJUST_ERROR, "ATADJUST", 6);
    itemPutCL(vm, returnItem(vm), working.bytes, working.length);
    return;
  }
  const char* match = ctSearchNthOrLast(vm, working.bytes, working.length, pattern.bytes,
                                        pattern.length, ctParamUnsigned(vm, 4, 0), nullptr);
  if (!match) {
    itemPutCL(vm, returnItem(vm), working.bytes, working.length);
    return;
  }
  putAdjusted(vm, working, static_cast<uint32_t>(match - working.bytes), position - 1,
              fillCharacter(vm));
}
