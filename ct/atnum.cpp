// ATNUM, AFTERATNUM and BEFORATNUM: the n-th or the last match of a pattern,
// reported as its position, the text after it or the text before it.
#include "ct/params.h"
#include "ct/search.h"

namespace {

enum class AtResult { After, Before, Position };

void putNotFound(VMEngine* vm, AtResult kind) {
  if (kind == AtResult::Position) {
    itemPutNI(vm, returnItem(vm), 0);
  } else {
    returnEmptyText(vm);
  }
}

void putMatch(VMEngine* vm, AtResult kind, CtText text, const char* match, uint32_t matchLength) {
  auto before = static_cast<uint32_t>(match - text.bytes);
  switch (kind) {
    case AtResult::After: {
      uint32_t behind = before + matchLength;
      itemPutCL(vm, returnItem(vm), text.bytes + behind, text.length - behind);
      break;
    }
    case AtResult::Before:
      itemPutCL(vm, returnItem(vm), text.bytes, before);
      break;
    case AtResult::Position:
      itemPutNInt(vm, returnItem(vm), int64_t{before} + 1);
      break;
  }
}

// The ignored prefix counts in every result, though it is not searched.
void atNumWorker(VMEngine* vm, AtResult kind, int32_t subCode, const char* operation) {
  CtText pattern;
  CtText text;
  if (!ctPatternAndText(vm, &pattern, &text)) {
    if (!ctArgErrorSubst(vm, subCode, operation, 4)) putNotFound(vm, kind);
    return;
  }
  uint32_t ignore = ctParamUnsigned(vm, 4, 0);
  if (ignore >= text.length) {
    ctArgErrorDefault(vm, subCode, operation, 4);
    putNotFound(vm, kind);
    return;
  }
  uint32_t matchLength = 0;
  const char* match =
      ctSearchNthOrLast(vm, text.bytes + ignore, text.length - ignore, pattern.bytes,
                        pattern.length, ctParamUnsigned(vm, 3, 0), &matchLength);
  if (match) {
    putMatch(vm, kind, text, match, matchLength);
  } else {
    putNotFound(vm, kind);
  }
}

}  // namespace

KOVO_FUNC(AFTERATNUM) {
  atNumWorker(vm, AtResult::After, 3121, "AFTERATNUM");
}

KOVO_FUNC(BEFORATNUM) {
  atNumWorker(vm, AtResult::Before, 3191, "BEFORATNUM");
}

KOVO_FUNC(ATNUM) {
  atNumWorker(vm, AtResult::Position, 3162, "ATNUM");
}
