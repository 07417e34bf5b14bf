// KOVO5_ARRAY_TO_STR and KOVO5_STR_TO_ARRAY: the framing of the host's array
// text form. Every failure is raised with code -1 and its text (CP1251).
#include <cstring>

#include "frame/frame.h"

namespace {

const char NOT_ARRAY[] = "function KOVO5_ARRAY_TO_STR param 1 is not array";
const char NOT_STRING[] = "function KOVO5_STR_TO_ARRAY param 1 is not string";
const char TOO_SHORT[] = "function KOVO5_STR_TO_ARRAY string is not valid length";
// "Неверный формат строки."
const char BAD_HEADER[] =
    "function KOVO5_STR_TO_ARRAY \xCD\xE5\xE2\xE5\xF0\xED\xFB\xE9 \xF4\xEE\xF0\xEC\xE0\xF2 "
    "\xF1\xF2\xF0\xEE\xEA\xE8.";
// "Тип данных для первого элемента в строке должен быть массивом."
const char FIRST_NOT_ARRAY[] =
    "function KOVO5_STR_TO_ARRAY \xD2\xE8\xEF \xE4\xE0\xED\xED\xFB\xF5 \xE4\xEB\xFF "
    "\xEF\xE5\xF0\xE2\xEE\xE3\xEE \xFD\xEB\xE5\xEC\xE5\xED\xF2\xE0 \xE2 \xF1\xF2\xF0\xEE\xEA\xE5 "
    "\xE4\xEE\xEB\xE6\xE5\xED \xE1\xFB\xF2\xFC \xEC\xE0\xF1\xF1\xE8\xE2\xEE\xEC.";
// "Ошибка разбора строки."
const char PARSE_FAILED[] =
    "function KOVO5_STR_TO_ARRAY \xCE\xF8\xE8\xE1\xEA\xE0 \xF0\xE0\xE7\xE1\xEE\xF0\xE0 "
    "\xF1\xF2\xF0\xEE\xEA\xE8.";

void raiseFailure(VMEngine* vm, const char* text) {
  errRaise(vm, -1, text, "");
}

// The element-field width of a known header, 0 for any other.
int headerWidth(const char* text) {
  if (std::memcmp(text, "#52A", ARRAY_TEXT_HEADER_LENGTH) == 0) return 2;
  if (std::memcmp(text, "#54A", ARRAY_TEXT_HEADER_LENGTH) == 0) return 4;
  return 0;
}

}  // namespace

// A text too long for a string is returned empty, as for a failure.
KOVO_FUNC(KOVO5_ARRAY_TO_STR) {
  const Item* array = paramItem(vm, 1, HB_IT_ARRAY);
  if (!array) {
    raiseFailure(vm, NOT_ARRAY);
    returnEmptyText(vm);
    return;
  }
  uint64_t needed = arrayGetStrLen(vm, array);
  if (needed >= UINT32_MAX) {
    returnEmptyText(vm);
    return;
  }
  auto* buffer = static_cast<char*>(vmAlloc(vm, needed + 1));
  std::memcpy(buffer, arrayStrHeader(vm), ARRAY_TEXT_HEADER_LENGTH);
  uint64_t length = ArrayToStr(vm, array, buffer, needed);
  itemPutCPtr(vm, returnItem(vm), buffer, static_cast<uint32_t>(length));
}

KOVO_FUNC(KOVO5_STR_TO_ARRAY) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  if (!text) return raiseFailure(vm, NOT_STRING);
  uint32_t length = itemStrLen(text);
  if (length < ARRAY_TEXT_HEADER_LENGTH) return raiseFailure(vm, TOO_SHORT);
  int width = headerWidth(itemStrPtr(text));
  if (width == 0) return raiseFailure(vm, BAD_HEADER);
  const char* element = itemStrPtr(text) + ARRAY_TEXT_HEADER_LENGTH;
  uint32_t elementLength = length - ARRAY_TEXT_HEADER_LENGTH;
  if (arrayGetElemType(element, elementLength, width) != HB_IT_ARRAY) {
    return raiseFailure(vm, FIRST_NOT_ARRAY);
  }
  Item array{};
  if (arrayGetElemValue(vm, element, elementLength, width, &array) != elementLength) {
    itemClear(vm, &array);
    return raiseFailure(vm, PARSE_FAILED);
  }
  itemForwardValue(vm, returnItem(vm), &array);
}
