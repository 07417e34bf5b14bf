// The array text form: a header and one element, each element a tag letter,
// a size in hexadecimal digits and a body (docs/array-text-form.md). Both
// directions walk nested arrays with a stack of their own, so that nesting
// of any depth costs heap, not machine stack.
#include <charconv>
#include <cstring>
#include <unordered_set>
#include <vector>

#include "kovo/hex_digits.h"
#include "kovo/host.h"
#include "kovo/host_encoding.h"

namespace {

constexpr char HEADER[] = "#54A";
constexpr int WRITTEN_WIDTH = 4;

struct Tag {
  char letter;
  HB_TYPE type;
};

constexpr Tag TAGS[] = {
    {'U', HB_IT_NIL},     {'L', HB_IT_LOGICAL}, {'I', HB_IT_INTEGER}, {'G', HB_IT_LONG},
    {'K', HB_IT_COUNTER}, {'N', HB_IT_DOUBLE},  {'D', HB_IT_DATE},    {'C', HB_IT_STRING},
    {'M', HB_IT_MEMO},    {'A', HB_IT_ARRAY},
};

char tagOf(HB_TYPE type) {
  for (const Tag& tag : TAGS) {
    if (tag.type == type) return tag.letter;
  }
  return 0;
}

bool typeOfTag(char letter, HB_TYPE* type) {
  for (const Tag& tag : TAGS) {
    if (tag.letter == letter) {
      *type = tag.type;
      return true;
    }
  }
  return false;
}

bool isValidWidth(int width) {
  return width == 2 || width == 4;
}

// Wide enough that a head and a body length never wrap around.
uint64_t headLength(int width) {
  return 1 + 2 * static_cast<uint64_t>(width);
}

// ---- Writing ---------------------------------------------------------------------------

// A scalar element as it is written: its tag and its body.
struct ScalarText {
  char tag = 'U';
  const char* body = nullptr;
  uint32_t length = 0;
  char digits[80];
};

uint32_t formatted(char* out, char* end, int64_t value) {
  return static_cast<uint32_t>(std::to_chars(out, end, value).ptr - out);
}

// Width and decimals go first, so that a double reads back with its display.
uint32_t formattedDouble(char* out, char* end, const Item* item) {
  char* p = std::to_chars(out, end, item->item.asDouble.length).ptr;
  *p++ = ',';
  p = std::to_chars(p, end, item->item.asDouble.decimal).ptr;
  *p++ = ',';
  p = std::to_chars(p, end, item->item.asDouble.value).ptr;
  return static_cast<uint32_t>(p - out);
}

// Types without a tag (hashes, blocks, pointers, symbols) are written as nil.
ScalarText describeScalar(const Item* item) {
  ScalarText text;
  char tag = tagOf(item->type);
  if (!tag) return text;
  text.tag = tag;
  text.body = text.digits;
  char* end = text.digits + sizeof text.digits;
  switch (item->type) {
    case HB_IT_LOGICAL:
      text.digits[0] = item->item.asLogical.value ? 'T' : 'F';
      text.length = 1;
      break;
    case HB_IT_INTEGER:
      text.length = formatted(text.digits, end, item->item.asInteger.value);
      break;
    case HB_IT_LONG:
      text.length = formatted(text.digits, end, item->item.asLong.value);
      break;
    case HB_IT_COUNTER:
      text.length = formatted(text.digits, end, item->item.asCounter.value);
      break;
    case HB_IT_DATE:
      text.length = formatted(text.digits, end, item->item.asDate.value);
      break;
    case HB_IT_DOUBLE:
      text.length = formattedDouble(text.digits, end, item);
      break;
    case HB_IT_STRING:
    case HB_IT_MEMO:
      text.body = item->item.asString.value;
      text.length = item->item.asString.length;
      break;
    default:
      break;
  }
  return text;
}

// Walks an array depth-first and hands every element to `put` as tag, size
// and body. An object, or an array met again inside itself, is written as
// nil: the form has no place for a class, nor for a cycle. Only arrays with
// more than one holder can be met again, so only they are remembered.
template <typename Put>
void walkArray(const Item* root, Put put) {
  struct Frame {
    const BaseArray* array;
    uint32_t next;
    bool remembered;
  };
  std::vector<Frame> path;
  std::unordered_set<const BaseArray*> sharedOnPath;
  auto visit = [&](const Item* item) {
    const BaseArray* array = (item->type & HB_IT_ARRAY) ? item->item.asArray.value : nullptr;
    if (!array) {
      ScalarText text = describeScalar(item);
      put(text.tag, text.length, text.body);
      return;
    }
    bool remembered = array->refCount > 1;
    if (array->cls || (remembered && !sharedOnPath.insert(array).second)) {
      put('U', 0, nullptr);
      return;
    }
    put('A', array->length, nullptr);
    path.push_back({array, 0, remembered});
  };
  visit(root);
  while (!path.empty()) {
    Frame& top = path.back();
    if (top.next == top.array->length) {
      if (top.remembered) sharedOnPath.erase(top.array);
      path.pop_back();
      continue;
    }
    visit(&top.array->items[top.next++]);
  }
}

char* writeSize(char* out, uint32_t size, int width) {
  for (int shift = 8 * width - 4; shift >= 0; shift -= 4)
    *out++ = UPPER_HEX_DIGITS[(size >> shift) & 0xF];
  return out;
}

// ---- Reading -----------------------------------------------------------------------------

class Reader {
 public:
  Reader(const char* text, uint32_t length, int width)
      : p_(text), end_(text + length), width_(width) {}

  uint32_t remaining() const { return static_cast<uint32_t>(end_ - p_); }
  const char* position() const { return p_; }

  bool readHead(char* tag, uint32_t* size) {
    if (remaining() < headLength(width_)) return false;
    *tag = *p_++;
    uint32_t value = 0;
    for (int i = 0; i < 2 * width_; i++) {
      int digit = hexDigitValue(*p_++);
      if (digit < 0) return false;
      value = value << 4 | static_cast<uint32_t>(digit);
    }
    *size = value;
    return true;
  }

  const char* take(uint32_t size) {
    if (size > remaining()) return nullptr;
    const char* body = p_;
    p_ += size;
    return body;
  }

 private:
  const char* p_;
  const char* end_;
  int width_;
};

// A whole body read as one number; false for anything else.
template <typename T>
bool parseWhole(const char* body, const char* end, T* value) {
  auto [ptr, ec] = std::from_chars(body, end, *value);
  return ec == std::errc() && ptr == end;
}

bool parseDouble(VMEngine* vm, const char* body, uint32_t length, Item* dst) {
  const char* end = body + length;
  const char* firstComma = static_cast<const char*>(std::memchr(body, ',', length));
  if (!firstComma) return false;
  const char* secondComma = static_cast<const char*>(
      std::memchr(firstComma + 1, ',', static_cast<size_t>(end - firstComma - 1)));
  uint16_t width = 0;
  uint16_t decimals = 0;
  double value = 0;
  if (!secondComma || !parseWhole(body, firstComma, &width) ||
      !parseWhole(firstComma + 1, secondComma, &decimals) ||
      !parseWhole(secondComma + 1, end, &value)) {
    return false;
  }
  itemPutNDLen(vm, dst, value, width, decimals);
  return true;
}

using PutNumber = Item* (*)(VMEngine* vm, Item* dst, int32_t value);

bool parseNumber(VMEngine* vm, const char* body, const char* end, PutNumber put, Item* dst) {
  int32_t number = 0;
  if (!parseWhole(body, end, &number)) return false;
  put(vm, dst, number);
  return true;
}

bool parseScalar(VMEngine* vm, HB_TYPE type, const char* body, uint32_t length, Item* dst) {
  const char* end = body + length;
  uint32_t counter = 0;
  switch (type) {
    case HB_IT_NIL:
      return length == 0;
    case HB_IT_LOGICAL:
      if (length != 1 || (body[0] != 'T' && body[0] != 'F')) return false;
      itemPutL(vm, dst, body[0] == 'T');
      return true;
    case HB_IT_INTEGER:
      return parseNumber(vm, body, end, itemPutNI, dst);
    case HB_IT_LONG:
      return parseNumber(vm, body, end, itemPutNL, dst);
    case HB_IT_DATE:
      return parseNumber(vm, body, end, itemPutDL, dst);
    case HB_IT_COUNTER:
      if (!parseWhole(body, end, &counter)) return false;
      itemPutCounter(vm, dst, counter);
      return true;
    case HB_IT_DOUBLE:
      return parseDouble(vm, body, length, dst);
    case HB_IT_STRING:
      itemPutCL(vm, dst, body, length);
      return true;
    case HB_IT_MEMO:
      itemPutCLM(vm, dst, body, length, 1);
      return true;
    default:
      return false;
  }
}

// Reads one element, arrays and all. An array's count is believed only while
// every element still owed could take at least its head in the bytes left,
// so no array is made larger than the text can fill.
bool readElement(VMEngine* vm, Reader& reader, int width, Item* dst) {
  struct Frame {
    BaseArray* array;
    uint32_t next;
  };
  std::vector<Frame> open;
  uint64_t owed = 0;
  Item* target = dst;
  for (;;) {
    char letter = 0;
    uint32_t size = 0;
    HB_TYPE type = HB_IT_NIL;
    if (!reader.readHead(&letter, &size) || !typeOfTag(letter, &type)) return false;
    if (type == HB_IT_ARRAY) {
      if ((owed + size) * headLength(width) > reader.remaining()) return false;
      arrayNew(vm, target, size);
      if (size > 0) open.push_back({target->item.asArray.value, 0});
      owed += size;
    } else {
      const char* body = reader.take(size);
      if (!body || !parseScalar(vm, type, body, size, target)) return false;
    }
    while (!open.empty() && open.back().next == open.back().array->length)
      open.pop_back();
    if (open.empty()) return true;
    target = &open.back().array->items[open.back().next++];
    owed--;
  }
}

}  // namespace

const char* arrayStrHeader(VMEngine*) {
  return HEADER;
}

uint64_t arrayGetStrLen(VMEngine*, const Item* array) {
  if (!array) return 0;
  uint64_t length = ARRAY_TEXT_HEADER_LENGTH;
  walkArray(array, [&](char, uint32_t bodyLength, const char* body) {
    length += headLength(WRITTEN_WIDTH) + (body ? bodyLength : 0);
  });
  return length;
}

uint64_t ArrayToStr(VMEngine*, const Item* array, char* buffer, uint64_t size) {
  if (!array || !buffer || size < ARRAY_TEXT_HEADER_LENGTH) return 0;
  char* out = buffer + ARRAY_TEXT_HEADER_LENGTH;
  char* end = buffer + size;
  bool fits = true;
  walkArray(array, [&](char tag, uint32_t sizeField, const char* body) {
    uint32_t bodyLength = body ? sizeField : 0;
    if (!fits || static_cast<uint64_t>(end - out) < headLength(WRITTEN_WIDTH) + bodyLength) {
      fits = false;
      return;
    }
    *out++ = tag;
    out = writeSize(out, sizeField, WRITTEN_WIDTH);
    if (bodyLength) std::memcpy(out, body, bodyLength);
    out += bodyLength;
  });
  return fits ? static_cast<uint64_t>(out - buffer) : 0;
}

HB_TYPE arrayGetElemType(const char* text, uint32_t length, int width) {
  HB_TYPE type = HB_IT_NIL;
  if (!text || length == 0 || !isValidWidth(width) || !typeOfTag(text[0], &type)) {
    return HB_IT_NIL;
  }
  return type;
}

uint32_t arrayGetElemValue(VMEngine* vm, const char* text, uint32_t length, int width, Item* dst) {
  itemClear(vm, dst);
  if (!text || !isValidWidth(width)) return 0;
  Reader reader(text, length, width);
  if (!readElement(vm, reader, width, dst)) {
    itemClear(vm, dst);
    return 0;
  }
  return static_cast<uint32_t>(reader.position() - text);
}

bool StrToArray(VMEngine* vm, const char* text, uint32_t length, Item* dst) {
  itemClear(vm, dst);
  if (!text || length < ARRAY_TEXT_HEADER_LENGTH) return false;
  bool known = std::memcmp(text, "#52A", ARRAY_TEXT_HEADER_LENGTH) == 0 ||
               std::memcmp(text, "#54A", ARRAY_TEXT_HEADER_LENGTH) == 0;
  if (!known) return false;
  int width = text[2] - '0';
  const char* element = text + ARRAY_TEXT_HEADER_LENGTH;
  uint32_t elementLength = length - ARRAY_TEXT_HEADER_LENGTH;
  if (arrayGetElemType(element, elementLength, width) != HB_IT_ARRAY) return false;
  if (arrayGetElemValue(vm, element, elementLength, width, dst) != elementLength) {
    itemClear(vm, dst);
    return false;
  }
  return true;
}
