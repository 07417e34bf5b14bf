// ATREPL: replaces the matches of a pattern up to the n-th, only the n-th, or
// only the last one. The ignored prefix is not searched but stays in the
// result.
#include <cstring>

#include "ct/params.h"
#include "ct/replace.h"
#include "ct/result.h"
#include "ct/search.h"

namespace {

constexpr int32_t ATREPL_ERROR = 3171;

// The text with one match replaced; null when the result cannot be had.
char* spliced(VMEngine* vm, CtText text, const char* match, uint32_t matchLength,
              CtText replacement, uint32_t* resultLength) {
  uint64_t length = uint64_t{text.length} - matchLength + replacement.length;
  char* result = ctTryResultBuffer(vm, length);
  if (!result) return nullptr;
  auto before = static_cast<uint32_t>(match - text.bytes);
  uint32_t behind = before + matchLength;
  std::memcpy(result, text.bytes, before);
  std::memcpy(result + before, replacement.bytes, replacement.length);
  std::memcpy(result + before + replacement.length, text.bytes + behind, text.length - behind);
  *resultLength = static_cast<uint32_t>(length);
  return result;
}

CtText replacementParam(VMEngine* vm) {
  Item* replacement = paramItem(vm, 3, HB_IT_STRING);
  return replacement ? ctTextOf(replacement) : CtText{"", 0};
}

}  // namespace

KOVO_FUNC(ATREPL) {
  CtText pattern;
  CtText text;
  if (!ctPatternAndText(vm, &pattern, &text)) {
    if (!ctArgErrorSubst(vm, ATREPL_ERROR, "ATREPL", 6)) ctReturnStringParam(vm, 2);
    return;
  }
  uint32_t ignore = ctParamUnsigned(vm, 6, 0);
  if (ignore >= text.length) {
    ctArgErrorDefault(vm, ATREPL_ERROR, "ATREPL", 6);
    ctReturnStringParam(vm, 2);
    return;
  }
  CtText replacement = replacementParam(vm);
  bool onlyNth = paramIsTrue(vm, 5);
  uint32_t counter = ctParamUnsigned(vm, 4, 0);
  uint32_t resultLength = 0;
  char* result;
  if (onlyNth) {
    uint32_t matchLength = 0;
    const char* match = ctSearchNthOrLast(vm, text.bytes + ignore, text.length - ignore,
                                          pattern.bytes, pattern.length, counter, &matchLength);
    if (!match) {
      ctReturnStringParam(vm, 2);
      return;
    }
    result = spliced(vm, text, match, matchLength, replacement, &resultLength);
  } else {
    result = ctReplaceMatches(vm, text, ignore, pattern, replacement,
                              counter == 0 ? CT_ALL : counter, STRING_LENGTH_LIMIT, &resultLength);
  }
  if (!result) {
    ctErrorDefaultGen(vm, EG_STROVERFLOW, ATREPL_ERROR, "ATREPL", 6);
    ctReturnStringParam(vm, 2);
    return;
  }
  itemPutCPtr(vm, returnItem(vm), result, resultLength);
}
