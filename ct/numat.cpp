// NUMAT: how often a pattern occurs in a text, by the forward search of the
// text-tools settings.
#include "frame/frame.h"
#include "search.h"

KOVO_FUNC(NUMAT) {
  constexpr int32_t NUMAT_ARGUMENT = 3622;
  const Item* pattern = paramItem(vm, 1, HB_IT_STRING);
  const Item* text = paramItem(vm, 2, HB_IT_STRING);
  if (!pattern || !text) {
    if (!ctArgErrorSubst(vm, NUMAT_ARGUMENT, "NUMAT", 3)) itemPutNI(vm, returnItem(vm), 0);
    return;
  }
  // A negative count to skip is a huge unsigned one, and so beyond any text.
  auto ignore = static_cast<uint32_t>(paramNumberOr(vm, 3, 0));
  uint32_t length = itemStrLen(text);
  if (ignore >= length) {
    ctArgErrorDefault(vm, NUMAT_ARGUMENT, "NUMAT", 3);
    itemPutNI(vm, returnItem(vm), 0);
    return;
  }
  uint32_t found = 0;
  ctSearchNth(vm, itemStrPtr(text) + ignore, length - ignore, itemStrPtr(pattern),
              itemStrLen(pattern), UINT32_MAX, nullptr, &found);
  itemPutNI(vm, returnItem(vm), static_cast<int32_t>(found));
}
