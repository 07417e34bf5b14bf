// Numbers seen as text or words: HB_FUN_WORD, LENNUM.
#include <cstring>

#include "str_result.h"

// Raised without substitution: a wrong argument leaves the result as it is.
KOVO_FUNC(HB_FUN_WORD) {
  if (!paramIsNumCompat(vm, 1)) return argErrorNoSubst(vm, 1091, "WORD", 1);
  itemPutNI(vm, returnItem(vm), paramGetNI(vm, 1));
}

// The length of the number's STR text without its leading blanks; 0 for
// anything that is no number.
KOVO_FUNC(LENNUM) {
  const Item* number = paramItem(vm, 1, HB_IT_NUMERIC | HB_IT_COUNTER);
  char* text = number ? itemStr(vm, number, nullptr, nullptr) : nullptr;
  uint32_t length = 0;
  if (text) {
    length = static_cast<uint32_t>(std::strlen(text));
    strLTrim(text, &length);
    vmFree(vm, text);
  }
  itemPutNL(vm, returnItem(vm), static_cast<int32_t>(length));
}
