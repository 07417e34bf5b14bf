// The simple serial encoding: one scalar per text behind a kind letter, with
// "len8" fields (eight bytes, a 32-bit big-endian value in the last four),
// and the length walker that also knows the arrays, hashes and objects that
// other code writes.
#include <cstring>

#include "frame/frame.h"
#include "frame/padded_bytes.h"

namespace {

constexpr uint32_t LEN8_SIZE = 8;
// A read cursor starts just past its own len8.
constexpr uint32_t CURSOR_START = LEN8_SIZE + 1;
// A kind letter and a len8, 64 bits wide so that a head and the length that
// follows it never wrap around.
constexpr uint64_t KIND_AND_LEN8 = 1 + LEN8_SIZE;

void putLen8(char* out, uint32_t value) {
  std::memset(out, 0, 4);
  out[4] = static_cast<char>(value >> 24);
  out[5] = static_cast<char>(value >> 16);
  out[6] = static_cast<char>(value >> 8);
  out[7] = static_cast<char>(value);
}

uint32_t readLen8(const PaddedBytes& text, uint64_t pos) {
  return text.be32(pos + 4);
}

PaddedBytes bytesOf(const Item* text) {
  return {reinterpret_cast<const unsigned char*>(itemStrPtr(text)), itemStrLen(text)};
}

// The bytes of a string parameter, to be changed in place. The caller's
// variable shares its buffer with the parameter, so the change shows there
// (and in every copy of that string), as programs rely on; constant text is
// first given a buffer of its own.
char* bytesInPlace(VMEngine* vm, Item* text) {
  if (text->item.asString.owned) return text->item.asString.value;
  return itemGetWriteCL(vm, text, nullptr);
}

// The value of a numeric-compatible parameter as the writer stores it.
uint32_t len8Param(VMEngine* vm, int n) {
  return static_cast<uint32_t>(paramGetNL(vm, n));
}

void returnBytes(VMEngine* vm, const char* bytes, uint32_t length) {
  itemPutCL(vm, returnItem(vm), bytes, length);
}

void returnKindAndLen8(VMEngine* vm, const char* kind, uint32_t value) {
  char out[2 + LEN8_SIZE];
  uint32_t letters = static_cast<uint32_t>(std::strlen(kind));
  std::memcpy(out, kind, letters);
  putLen8(out + letters, value);
  returnBytes(vm, out, letters + LEN8_SIZE);
}

void returnSerialString(VMEngine* vm, const Item* text) {
  uint32_t length = itemStrLen(text);
  if (length > UINT32_MAX - KIND_AND_LEN8) return;
  auto* out = static_cast<char*>(vmAlloc(vm, length + KIND_AND_LEN8 + 1));
  out[0] = 'C';
  putLen8(out + 1, length);
  std::memcpy(out + KIND_AND_LEN8, itemStrPtr(text), length);
  itemPutCPtr(vm, returnItem(vm), out, static_cast<uint32_t>(length + KIND_AND_LEN8));
}

// The size of the first item of a text, by its letter; arrays, hashes and
// objects add the items they hold to those still to be walked, so nesting
// costs no recursion. An unknown letter (a zero past the end among them)
// takes nothing, and so does every item after it, which would be read from
// the same place.
uint64_t serialSize(const PaddedBytes& text) {
  uint64_t pos = 0;
  uint64_t pending = 1;
  while (pending > 0) {
    pending--;
    uint64_t count = 0;
    switch (text.at(pos)) {
      case 'Z':
        pos += 1;
        break;
      case 'L':
        pos += 2;
        break;
      case 'D':
        pos += 9;
        break;
      case 'N':
        pos += 10;
        break;
      case 'C':
      case 'Q':
        pos += KIND_AND_LEN8 + readLen8(text, pos + 1);
        break;
      case 'A':
        pending += readLen8(text, pos + 1);
        pos += KIND_AND_LEN8;
        break;
      case 'H':
        pending += 2 * uint64_t{readLen8(text, pos + 1)};
        pos += KIND_AND_LEN8;
        break;
      case 'O':
        count = readLen8(text, pos + 1);
        pending += 1 + 2 * count;
        pos += KIND_AND_LEN8;
        break;
      default:
        pending = 0;
        break;
    }
  }
  return pos;
}

// Reads one "N" item: "NI" an integer, "NL" a long, anything else a double.
void returnSerialNumber(VMEngine* vm, const PaddedBytes& text) {
  switch (text.at(1)) {
    case 'I':
      itemPutNI(vm, returnItem(vm), static_cast<int32_t>(readLen8(text, 2)));
      break;
    case 'L':
      itemPutNL(vm, returnItem(vm), static_cast<int32_t>(readLen8(text, 2)));
      break;
    default: {
      double value = 0;
      text.copy(2, &value, sizeof value);
      itemPutND(vm, returnItem(vm), value);
      break;
    }
  }
}

}  // namespace

KOVO_FUNC(HB_SERIALIZESIMPLE) {
  const Item* item = paramResolved(vm, 1);
  if (!item) return;
  switch (item->type) {
    case HB_IT_NIL:
      returnBytes(vm, "Z", 1);
      break;
    case HB_IT_LOGICAL:
      returnBytes(vm, item->item.asLogical.value ? "LT" : "LF", 2);
      break;
    case HB_IT_DATE:
      returnKindAndLen8(vm, "D", static_cast<uint32_t>(item->item.asDate.value));
      break;
    case HB_IT_INTEGER:
      returnKindAndLen8(vm, "NI", static_cast<uint32_t>(item->item.asInteger.value));
      break;
    case HB_IT_LONG:
      returnKindAndLen8(vm, "NL", static_cast<uint32_t>(item->item.asLong.value));
      break;
    case HB_IT_DOUBLE: {
      char out[2 + sizeof(double)] = {'N', 'D'};
      std::memcpy(out + 2, &item->item.asDouble.value, sizeof(double));
      returnBytes(vm, out, sizeof out);
      break;
    }
    case HB_IT_STRING:
      returnSerialString(vm, item);
      break;
    default:
      break;
  }
}

// A text too short for its kind decodes to nil, as do the kinds that only
// the length walker knows.
KOVO_FUNC(HB_DESERIALIZESIMPLE) {
  const Item* item = paramItem(vm, 1, HB_IT_STRING);
  if (!item) return;
  int64_t maxLength = paramNumberOr(vm, 2, -1);
  PaddedBytes text = bytesOf(item);
  switch (text.at(0)) {
    case 'L':
      if (text.length >= 2) itemPutL(vm, returnItem(vm), text.at(1) == 'T');
      break;
    case 'D':
      if (text.length >= KIND_AND_LEN8)
        itemPutDL(vm, returnItem(vm), static_cast<int32_t>(readLen8(text, 1)));
      break;
    case 'N':
      if (text.length >= 2 + LEN8_SIZE) returnSerialNumber(vm, text);
      break;
    case 'C': {
      if (text.length < KIND_AND_LEN8) break;
      uint32_t length = readLen8(text, 1);
      if (maxLength >= 1 && length > static_cast<uint32_t>(maxLength)) break;
      if (text.holds(KIND_AND_LEN8, length)) {
        returnBytes(vm, itemStrPtr(item) + KIND_AND_LEN8, length);
      }
      break;
    }
    default:
      break;
  }
}

KOVO_FUNC(HB_SERIALNEXT) {
  const Item* item = paramItem(vm, 1, HB_IT_STRING);
  if (!item) return;
  itemPutNL(vm, returnItem(vm), static_cast<int32_t>(serialSize(bytesOf(item))));
}

// A string that is not passed counts as empty.
KOVO_FUNC(HB_DESERIALBEGIN) {
  const Item* item = paramItem(vm, 1, HB_IT_STRING);
  uint32_t length = item ? itemStrLen(item) : 0;
  if (length > UINT32_MAX - LEN8_SIZE) return;
  auto* out = static_cast<char*>(vmAlloc(vm, size_t{length} + LEN8_SIZE + 1));
  putLen8(out, CURSOR_START);
  if (length) std::memcpy(out + LEN8_SIZE, itemStrPtr(item), length);
  itemPutCPtr(vm, returnItem(vm), out, length + LEN8_SIZE);
}

KOVO_FUNC(HB_DESERIALRESET) {
  Item* item = paramItem(vm, 1, HB_IT_STRING);
  if (item && itemStrLen(item) >= LEN8_SIZE) putLen8(bytesInPlace(vm, item), CURSOR_START);
}

// HB_CREATELEN8(n) returns the len8 of n; HB_CREATELEN8(c, n) writes it over
// the first eight bytes of c in place.
KOVO_FUNC(HB_CREATELEN8) {
  Item* text = paramItem(vm, 1, HB_IT_STRING);
  if (text && paramIsNumCompat(vm, 2)) {
    if (itemStrLen(text) >= LEN8_SIZE) putLen8(bytesInPlace(vm, text), len8Param(vm, 2));
  } else if (paramIsNumCompat(vm, 1)) {
    char out[LEN8_SIZE];
    putLen8(out, len8Param(vm, 1));
    returnBytes(vm, out, LEN8_SIZE);
  }
}

KOVO_FUNC(HB_GETLEN8) {
  const Item* item = paramItem(vm, 1, HB_IT_STRING);
  if (!item || itemStrLen(item) < 4) {
    itemPutNL(vm, returnItem(vm), -1);
    return;
  }
  itemPutNL(vm, returnItem(vm), static_cast<int32_t>(readLen8(bytesOf(item), 0)));
}
