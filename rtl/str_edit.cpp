// Deleting and inserting bytes: STRDEL, STUFF.
#include <cstring>

#include "str_result.h"

// Byte i of the string goes where byte i of the mask is not a blank; bytes
// beyond the end of the mask stay.
KOVO_FUNC(STRDEL) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  const Item* mask = paramItem(vm, 2, HB_IT_STRING);
  if (!text || !mask) return returnEmptyText(vm);
  uint32_t length = itemStrLen(text);
  uint32_t masked = length < itemStrLen(mask) ? length : itemStrLen(mask);
  const char* source = itemStrPtr(text);
  const char* marks = itemStrPtr(mask);
  uint32_t kept = 0;
  for (uint32_t i = 0; i < masked; i++)
    kept += marks[i] == ' ';
  if (kept == masked) return itemReturn(vm, text);
  uint32_t resultLength = kept + (length - masked);
  char* buffer = newText(vm, resultLength);
  char* out = buffer;
  for (uint32_t i = 0; i < masked; i++) {
    if (marks[i] == ' ') *out++ = source[i];
  }
  std::memcpy(out, source + masked, length - masked);
  returnText(vm, buffer, resultLength);
}

// STUFF(string, start, delete, insert): deletes `delete` bytes from position
// `start` on and puts `insert` in their place. A start below 1 is 1 and one
// beyond the end appends; a negative count deletes nothing and a count beyond
// the end deletes the rest. A missing or nil insert is the empty text. Any
// other argument of the wrong type gives the empty text.
KOVO_FUNC(STUFF) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  const Item* insert = paramResolved(vm, 4);
  bool hasInsert = insert && (insert->type & HB_IT_STRING);
  bool insertUsable = hasInsert || !insert || insert->type == HB_IT_NIL;
  if (!text || !paramIsNumCompat(vm, 2) || !paramIsNumCompat(vm, 3) || !insertUsable) {
    return returnEmptyText(vm);
  }
  uint32_t length = itemStrLen(text);
  const char* inserted = hasInsert ? itemStrPtr(insert) : "";
  uint32_t insertLength = hasInsert ? itemStrLen(insert) : 0;
  int64_t start = paramGetNL(vm, 2);
  uint32_t before = start < 1 ? 0 : clampCount(start - 1, length);
  uint32_t deleted = clampCount(paramGetNL(vm, 3), length - before);
  if (deleted == 0 && insertLength == 0) return itemReturn(vm, text);
  uint64_t resultLength = uint64_t{length} - deleted + insertLength;
  if (textTooLong(static_cast<double>(resultLength))) {
    return stringOverflowError(vm, "STUFF", 4);
  }
  char* buffer = newText(vm, resultLength);
  const char* source = itemStrPtr(text);
  std::memcpy(buffer, source, before);
  std::memcpy(buffer + before, inserted, insertLength);
  std::memcpy(buffer + before + insertLength, source + before + deleted, length - before - deleted);
  returnText(vm, buffer, static_cast<uint32_t>(resultLength));
}
