// Filling to a width: PADR (also PAD), PADL, PADC.
#include <cstring>

#include "str_result.h"

namespace {

enum class Placement { Start, End, Centre };

// Bytes of fill before the text.
uint32_t leadingFill(Placement placement, uint32_t surplus) {
  switch (placement) {
    case Placement::Start:
      return 0;
    case Placement::End:
      return surplus;
    case Placement::Centre:
      return surplus / 2;
  }
  return 0;
}

// Any value is padded as its display text. A width at or below the text's
// length cuts the text from the right, for all three placements. The fill is
// the first byte of a fill string, so an empty one fills with byte 0.
void pad(VMEngine* vm, Placement placement) {
  if (paramCount(vm) < 2 || !paramIsNumCompat(vm, 2)) return returnEmptyText(vm);
  const Item* value = paramItem(vm, 1, HB_IT_ANY);
  uint32_t length = 0;
  bool mustFree = false;
  char* text = itemPadConv(vm, value, &length, &mustFree);
  if (!text) return returnEmptyText(vm);
  int32_t width = paramGetNL(vm, 2);
  if (width <= static_cast<int64_t>(length)) {
    if (!mustFree && width == static_cast<int64_t>(length)) {
      itemReturn(vm, value);
    } else {
      itemPutCL(vm, returnItem(vm), text, width > 0 ? static_cast<uint32_t>(width) : 0);
    }
  } else {
    const Item* fill = paramItem(vm, 3, HB_IT_STRING);
    char fillByte = fill ? itemStrPtr(fill)[0] : ' ';
    auto total = static_cast<uint32_t>(width);
    uint32_t before = leadingFill(placement, total - length);
    char* buffer = newText(vm, total);
    std::memset(buffer, fillByte, before);
    std::memcpy(buffer + before, text, length);
    std::memset(buffer + before + length, fillByte, total - before - length);
    returnText(vm, buffer, total);
  }
  itemReleaseString(text, mustFree);
}

}  // namespace

KOVO_FUNC(PADR) {
  pad(vm, Placement::Start);
}
KOVO_ALIAS(PAD, PADR);

KOVO_FUNC(PADL) {
  pad(vm, Placement::End);
}

KOVO_FUNC(PADC) {
  pad(vm, Placement::Centre);
}
