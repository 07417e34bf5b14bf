// HB_FREADLINE: one line from a file handle, without its end-of-line mark,
// the file left just behind the mark.
#include <cstring>

#include "frame/frame.h"

namespace {

constexpr int32_t FREADLINE_SUBCODE = 3012;
constexpr uint32_t DEFAULT_BUFFER = 512;
constexpr uint32_t SMALLEST_BUFFER = 10;
// Lengths were 16-bit values: a line ends after this many bytes at the latest.
constexpr uint32_t LONGEST_LINE = 65535;
constexpr int32_t LINE_READ = 0;
constexpr int32_t END_OF_FILE = -1;
// Marks beyond this many are not looked at; buffers up to the stack's share
// are read on the stack, and only the line itself goes to the heap.
constexpr uint32_t MARK_LIMIT = 64;
constexpr uint32_t STACK_BUFFER = 4096;

struct Mark {
  const char* bytes;
  uint32_t length;
};

struct Marks {
  Mark list[MARK_LIMIT];
  uint32_t count;
};

// The marks of parameter 3 in their order: one string or an array of
// strings; carriage return + line feed when absent. Empty marks never match.
void readMarks(VMEngine* vm, Marks* marks) {
  const Item* given = paramResolved(vm, 3);
  marks->count = 0;
  auto add = [marks](const Item* item) {
    if (itemIsString(item) && itemStrLen(item) > 0 && marks->count < MARK_LIMIT)
      marks->list[marks->count++] = {itemStrPtr(item), itemStrLen(item)};
  };
  if (given && (given->type & HB_IT_ARRAY)) {
    BaseArray* array = given->item.asArray.value;
    for (uint32_t i = 1; i <= array->length; i++)
      add(arrayGetItemPtr(given, i));
  } else if (given && itemIsString(given)) {
    add(given);
  } else {
    marks->list[marks->count++] = {"\r\n", 2};
  }
}

// The end (index of its last byte) of the earliest mark in `bytes` that ends
// at `from` or later; among marks that end at the same byte the first listed
// wins. Its length goes to *length.
int64_t findMark(const char* bytes, uint32_t held, uint32_t from, const Marks& marks,
                 uint32_t* length) {
  int64_t best = -1;
  for (uint32_t i = 0; i < marks.count; i++) {
    const Mark& mark = marks.list[i];
    char last = mark.bytes[mark.length - 1];
    uint32_t at = from;
    while (at < held && (best < 0 || at < best)) {
      const void* hit = std::memchr(bytes + at, last, (best < 0 ? held : best) - at);
      if (!hit) break;
      uint32_t end = static_cast<uint32_t>(static_cast<const char*>(hit) - bytes);
      if (end + 1 >= mark.length &&
          std::memcmp(bytes + end + 1 - mark.length, mark.bytes, mark.length - 1) == 0) {
        best = end;
        *length = mark.length;
        break;
      }
      at = end + 1;
    }
  }
  return best;
}

}  // namespace

KOVO_FUNC(HB_FREADLINE) {
  if (!paramIsNumCompat(vm, 1) || !paramIsByRef(vm, 2)) {
    argError(vm, FREADLINE_SUBCODE, "FREADLINE", 4);
    return;
  }
  auto handle = static_cast<FHANDLE>(paramGetNL(vm, 1));
  Marks marks;
  readMarks(vm, &marks);
  auto size = static_cast<uint32_t>(paramGetNL(vm, 4));
  if (size < SMALLEST_BUFFER) size = DEFAULT_BUFFER;

  char onStack[STACK_BUFFER + 1];
  uint32_t capacity = size;
  char* buffer = size <= STACK_BUFFER ? onStack : static_cast<char*>(vmAlloc(vm, capacity + 1));
  uint32_t held = 0;
  uint32_t enlargements = 0;
  uint32_t lineLength = 0;
  bool endOfFile = false;
  for (;;) {
    uint32_t got = fsReadLarge(vm, handle, buffer + held, capacity - held);
    if (got == 0) {
      lineLength = held;
      endOfFile = true;
      break;
    }
    uint32_t markLength = 0;
    int64_t end = findMark(buffer, held + got, held, marks, &markLength);
    if (end >= 0 || held + got >= LONGEST_LINE) {
      uint32_t consumed = end >= 0 ? static_cast<uint32_t>(end) + 1 : LONGEST_LINE;
      lineLength = end >= 0 ? consumed - markLength : LONGEST_LINE;
      uint32_t beyond = held + got - consumed;
      if (beyond > 0) fsSeekLarge(vm, handle, -static_cast<int64_t>(beyond), FS_RELATIVE);
      break;
    }
    held += got;
    if (held == capacity) {
      enlargements++;
      capacity = (enlargements + 1) * size + 1;
      if (buffer == onStack) {
        buffer = static_cast<char*>(vmAlloc(vm, capacity + 1));
        std::memcpy(buffer, onStack, held);
      } else {
        buffer = static_cast<char*>(vmRealloc(vm, buffer, capacity + 1));
      }
    }
  }
  hb_storclen(vm, buffer, lineLength, 2);
  if (buffer != onStack) vmFree(vm, buffer);
  itemPutNI(vm, returnItem(vm), endOfFile ? END_OF_FILE : LINE_READ);
}
