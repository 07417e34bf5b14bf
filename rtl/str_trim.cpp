// Trimming: LTRIM, RTRIM (also TRIM), ALLTRIM.
#include "str_result.h"

namespace {

// The part [start, start + length) of `text`; a memo stays a memo.
void returnTrimmed(VMEngine* vm, const Item* text, const char* start, uint32_t length) {
  if (length == itemStrLen(text)) return itemReturn(vm, text);
  itemPutCLM(vm, returnItem(vm), start, length, (text->type & HB_IT_MEMOFLAG) != 0);
}

}  // namespace

KOVO_FUNC(LTRIM) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  if (!text) return argError(vm, 1101, "LTRIM", 1);
  uint32_t length = itemStrLen(text);
  const char* start = strLTrim(itemStrPtr(text), &length);
  returnTrimmed(vm, text, start, length);
}

// The second argument switches on trimming of tabs, line feeds and carriage
// returns too. The error names "TRIM" under both exported names.
KOVO_FUNC(RTRIM) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  if (!text) return argError(vm, 1100, "TRIM", 1);
  uint32_t length = strRTrimLen(itemStrPtr(text), itemStrLen(text), paramSwitch(vm, 2));
  returnTrimmed(vm, text, itemStrPtr(text), length);
}
KOVO_ALIAS(TRIM, RTRIM);

// Trailing blanks go first (with the any-space switch as for RTRIM), then the
// leading white space.
KOVO_FUNC(ALLTRIM) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  if (!text) return argError(vm, 2022, "ALLTRIM", 1);
  uint32_t length = strRTrimLen(itemStrPtr(text), itemStrLen(text), paramSwitch(vm, 2));
  const char* start = strLTrim(itemStrPtr(text), &length);
  returnTrimmed(vm, text, start, length);
}
