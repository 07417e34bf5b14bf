#include "str_result.h"

namespace {

constexpr int32_t SUBCODE_STRING_OVERFLOW = 1234;

}  // namespace

char* newText(VMEngine* vm, uint64_t length) {
  return static_cast<char*>(vmAlloc(vm, static_cast<size_t>(length) + 1));
}

void returnText(VMEngine* vm, char* buffer, uint32_t length) {
  itemPutCPtr(vm, returnItem(vm), buffer, length);
}

void returnSlice(VMEngine* vm, const Item* source, uint32_t start, uint32_t count) {
  if (count == 0) return returnEmptyText(vm);
  if (start == 0 && count == itemStrLen(source)) return itemReturn(vm, source);
  itemPutCL(vm, returnItem(vm), itemStrPtr(source) + start, count);
}

uint32_t clampCount(int64_t count, uint32_t length) {
  if (count < 1) return 0;
  return count < length ? static_cast<uint32_t>(count) : length;
}

bool paramSwitch(VMEngine* vm, int n) {
  const Item* item = paramResolved(vm, n);
  return item && !(item->type & HB_IT_ARRAY) && param(vm, n) != 0;
}

bool textTooLong(double length) {
  return length >= static_cast<double>(STRING_LENGTH_LIMIT);
}

void stringOverflowError(VMEngine* vm, const char* operation, int declared) {
  argErrorGen(vm, EG_STROVERFLOW, SUBCODE_STRING_OVERFLOW, operation, declared);
}
