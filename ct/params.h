// Parameter readings that the text-tools functions share.
#pragma once

#include <cstdint>

#include "frame/frame.h"

// The no-limit count: -1 read as an unsigned 32-bit number.
inline constexpr uint32_t CT_ALL = UINT32_MAX;

// Parameter n as an unsigned 32-bit count when it is numeric-compatible, else
// `fallback`. A negative number becomes a very large count, and the loops that
// compare counts as unsigned numbers rely on that.
inline uint32_t ctParamUnsigned(VMEngine* vm, int n, uint32_t fallback) {
  return static_cast<uint32_t>(paramNumberOr(vm, n, fallback));
}

// A count where 0 and a missing or non-numeric parameter mean no limit.
inline uint32_t ctParamLimit(VMEngine* vm, int n) {
  uint32_t limit = ctParamUnsigned(vm, n, 0);
  return limit == 0 ? CT_ALL : limit;
}

struct CtText {
  const char* bytes;
  uint32_t length;
};

inline CtText ctTextOf(const Item* item) {
  return {item->item.asString.value, item->item.asString.length};
}

// Parameters 1 and 2, the pattern and the text of the searching functions;
// false unless both are strings.
inline bool ctPatternAndText(VMEngine* vm, CtText* pattern, CtText* text) {
  Item* patternItem = paramItem(vm, 1, HB_IT_STRING);
  Item* textItem = paramItem(vm, 2, HB_IT_STRING);
  if (!patternItem || !textItem) return false;
  *pattern = ctTextOf(patternItem);
  *text = ctTextOf(textItem);
  return true;
}

// Parameter n as the result when it is a string, else "".
inline void ctReturnStringParam(VMEngine* vm, int n) {
  Item* text = paramItem(vm, n, HB_IT_STRING);
  if (text) {
    itemReturn(vm, text);
  } else {
    returnEmptyText(vm);
  }
}
