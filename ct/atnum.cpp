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
    itemPutCL(vm, returnItem(vm), "", 0);
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
  Item* patternItem = paramItem(vm, 1, HB_IT_STRING);
  Item* textItem = paramItem(vm, 2, HB_IT_STRING);
  if (!patternItem || !textItem) {
    if (!ctArgErrorSubst(vm, subCode, operation, 4)) putNotFound(vm, kind);
    return;
  }
  CtText pattern = ctTextOf(patternItem);
  CtText text = ctTextOf(textItem);
  uint32_t ignore = ctParamUnsigned(vm, 4, 0);
  if (ignore >= text.length) {
    ctArgErrorDefault(vm, subCode, operation, 4);
    putNotFound(vm, kind);
    return;
  }
  const char* searched = text.bytes + ignore;
  uint32_t searchedLength = text.length - ignore;
  uint32_t n = ctParamUnsigned(vm, 3, 0);
  uint32_t matchLength = 0;
  const char* match = n != 0 ? ctSearchNth(vm, searched, searchedLength, pattern.bytes,
                                           pattern.length, n, &matchLength, nullptr)
                             : ctSearchBackward(vm, searched, searchedLength, pattern.bytes,
                                                pattern.length, &matchLength);
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
