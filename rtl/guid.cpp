// Identifiers: new random version-4 GUIDs in the memory layout of the Windows
// GUID (a 32-bit and two 16-bit little-endian fields, then eight bytes), its
// 38-character text form, and the host's 22-character form.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "frame/frame.h"
#include "kovo/hex_digits.h"
#include "os/random.h"
#include "rtl/guid.h"

bool newGuid(Guid* guid) {
  if (!osRandomBytes(guid->bytes, GUID_SIZE)) {
    *guid = Guid{};
    return false;
  }
  // The version in the high nibble of the third field (its second byte in
  // memory), the variant in the top bits of the first of the last eight.
  guid->bytes[7] = static_cast<uint8_t>((guid->bytes[7] & 0x0F) | 0x40);
  guid->bytes[8] = static_cast<uint8_t>((guid->bytes[8] & 0x3F) | 0x80);
  return true;
}

uint32_t littleEndian(const uint8_t* bytes, int count) {
  uint32_t value = 0;
  for (int i = count - 1; i >= 0; i--)
    value = value << 8 | bytes[i];
  return value;
}

namespace {

constexpr uint32_t GUID_TEXT_LENGTH = 38;

// The text form with upper-case digits and its NUL, in a 40-byte buffer.
void formatGuid(const Guid& guid, char (&text)[40]) {
  const uint8_t* b = guid.bytes;
  std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                littleEndian(b, 4), littleEndian(b + 4, 2), littleEndian(b + 6, 2), b[8], b[9],
                b[10], b[11], b[12], b[13], b[14], b[15]);
}

// Where "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}" has its hyphens.
bool isHyphenPosition(uint32_t i) {
  return i == 9 || i == 14 || i == 19 || i == 24;
}

// The hex digits of the text in order, 32 of them, once its braces and
// hyphens stand where they belong.
bool guidDigits(const char* text, uint8_t (&digits)[32]) {
  if (std::strlen(text) != GUID_TEXT_LENGTH || text[0] != '{' || text[37] != '}') return false;
  int count = 0;
  for (uint32_t i = 1; i < GUID_TEXT_LENGTH - 1; i++) {
    if (isHyphenPosition(i)) {
      if (text[i] != '-') return false;
      continue;
    }
    int value = hexDigitValue(text[i]);
    if (value < 0) return false;
    digits[count++] = static_cast<uint8_t>(value);
  }
  return true;
}

// Parses the text form (hex digits of either case); false for anything else.
bool parseGuid(const char* text, Guid* guid) {
  uint8_t digits[32];
  if (!text || !guidDigits(text, digits)) return false;
  uint8_t inTextOrder[GUID_SIZE];
  for (uint32_t i = 0; i < GUID_SIZE; i++)
    inTextOrder[i] = static_cast<uint8_t>(digits[2 * i] << 4 | digits[2 * i + 1]);
  // The three leading fields are numbers, kept little-endian in memory.
  const int fieldOrder[GUID_SIZE] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
  for (uint32_t i = 0; i < GUID_SIZE; i++)
    guid->bytes[i] = inTextOrder[fieldOrder[i]];
  return true;
}

void returnGuid(VMEngine* vm, const Guid& guid) {
  itemPutCL(vm, returnItem(vm), reinterpret_cast<const char*>(guid.bytes), GUID_SIZE);
}

void returnGuidText(VMEngine* vm, const Guid& guid) {
  char text[40];
  formatGuid(guid, text);
  itemPutCL(vm, returnItem(vm), text, GUID_TEXT_LENGTH);
}

}  // namespace

KOVO_FUNC(NEWGUID16) {
  Guid guid;
  newGuid(&guid);
  returnGuid(vm, guid);
}

KOVO_FUNC(NEWGUID38) {
  Guid guid;
  newGuid(&guid);
  returnGuidText(vm, guid);
}

KOVO_FUNC(GENGUID) {
  Guid guid;
  if (newGuid(&guid)) {
    returnGuidText(vm, guid);
  } else {
    returnEmptyText(vm);
  }
}

KOVO_FUNC(XGUID) {
  Guid guid;
  if (!newGuid(&guid)) {
    returnEmptyText(vm);
    return;
  }
  char* text = genguid22(vm, guid.bytes);
  itemPutCPtr(vm, returnItem(vm), text, static_cast<uint32_t>(std::strlen(text)));
}

// Text that does not parse gives sixteen zero bytes.
KOVO_FUNC(IDXTOGUID) {
  Guid guid{};
  if (!parseGuid(paramPChar(vm, 1), &guid)) guid = Guid{};
  returnGuid(vm, guid);
}

// The first sixteen bytes of the string; bytes that a shorter string lacks are zero.
KOVO_FUNC(GUIDTOIDX2) {
  Guid guid{};
  if (const char* bytes = paramPChar(vm, 1)) {
    std::memcpy(guid.bytes, bytes, std::min(GUID_SIZE, paramGetCLen(vm, 1)));
  }
  returnGuidText(vm, guid);
}
