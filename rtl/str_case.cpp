// Case: UPPER, LOWER, by the current code page.
#include "str_result.h"

namespace {

using CaseCopy = void (*)(VMEngine*, char*, const char*, uint32_t);

void convertCase(VMEngine* vm, CaseCopy copy, int32_t subCode, const char* operation) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  if (!text) return argError(vm, subCode, operation, 1);
  uint32_t length = itemStrLen(text);
  if (length == 0) return returnEmptyText(vm);
  char* buffer = newText(vm, length);
  copy(vm, buffer, itemStrPtr(text), length);
  returnText(vm, buffer, length);
}

}  // namespace

KOVO_FUNC(UPPER) {
  convertCase(vm, strUpperCopy, 1102, "UPPER");
}

KOVO_FUNC(LOWER) {
  convertCase(vm, strLowerCopy, 1103, "LOWER");
}
