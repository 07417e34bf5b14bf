// Version-4 GUIDs from the kernel's random source, formatted and parsed as
// StringFromGUID2 and IIDFromString do on Windows.
#include "os/guid.h"

#include <sys/random.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "kovo/hex_digits.h"

namespace {

bool randomBytes(uint8_t* out, size_t size) {
  while (size > 0) {
    ssize_t got = getrandom(out, size, 0);
    if (got < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    out += got;
    size -= static_cast<size_t>(got);
  }
  return true;
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

}  // namespace

bool osNewGuid(Guid* guid) {
  if (!randomBytes(guid->bytes, GUID_SIZE)) {
    *guid = Guid{};
    return false;
  }
  // The version in the high nibble of the third field (its second byte in
  // memory), the variant in the top bits of the first of the last eight.
  guid->bytes[7] = static_cast<uint8_t>((guid->bytes[7] & 0x0F) | 0x40);
  guid->bytes[8] = static_cast<uint8_t>((guid->bytes[8] & 0x3F) | 0x80);
  return true;
}

void osGuidText(const Guid& guid, char (&text)[GUID_TEXT_LENGTH + 2]) {
  const uint8_t* b = guid.bytes;
  std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                littleEndian(b, 4), littleEndian(b + 4, 2), littleEndian(b + 6, 2), b[8], b[9],
                b[10], b[11], b[12], b[13], b[14], b[15]);
}

bool osParseGuid(const char* text, Guid* guid) {
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
