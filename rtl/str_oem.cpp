// Conversions between the OEM code page (CP866) and the ANSI code page
// (CP1251) of the platform: OEMTOANSI (also OEMTOCHAR) and ANSITOOEM (also
// CHARTOOEM).
//
// Only the Cyrillic letters change, Yo included; every other byte, the
// pseudo-graphics of the OEM page among them, is kept as it is. Anything but
// a string gives the empty text.
#include <cstring>

#include "str_result.h"

namespace {

void translate(VMEngine* vm, const char* from, const char* to) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  if (!text) return returnEmptyText(vm);
  uint32_t length = itemStrLen(text);
  if (length == 0) return itemReturn(vm, text);
  char* buffer = newText(vm, length);
  std::memcpy(buffer, itemStrPtr(text), length);
  cdpTranslate(buffer, length, cdpFind(from), cdpFind(to));
  returnText(vm, buffer, length);
}

}  // namespace

KOVO_FUNC(OEMTOANSI) {
  translate(vm, "CP866", "CP1251");
}
KOVO_ALIAS(OEMTOCHAR, OEMTOANSI);

KOVO_FUNC(ANSITOOEM) {
  translate(vm, "CP1251", "CP866");
}
KOVO_ALIAS(CHARTOOEM, ANSITOOEM);
