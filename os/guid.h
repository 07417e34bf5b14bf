// GUIDs from the operating system, in the memory layout of the Windows GUID
// (a 32-bit and two 16-bit little-endian fields, then eight bytes): a new
// one, its 38-character text form and that form read back.
#pragma once

#include <cstdint>

inline constexpr uint32_t GUID_SIZE = 16;
inline constexpr uint32_t GUID_TEXT_LENGTH = 38;

struct Guid {
  uint8_t bytes[GUID_SIZE];
};

// A new GUID; false, with the bytes left zero, when the system cannot make one.
bool osNewGuid(Guid* guid);
// "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}" with upper-case digits and its NUL.
void osGuidText(const Guid& guid, char (&text)[GUID_TEXT_LENGTH + 2]);
// The text form (digits of either case) read back; false, with `guid` left
// untouched, for anything else.
bool osParseGuid(const char* text, Guid* guid);

// `count` bytes read as a little-endian number.
inline uint32_t littleEndian(const uint8_t* bytes, int count) {
  uint32_t value = 0;
  for (int i = count - 1; i >= 0; i--)
    value = value << 8 | bytes[i];
  return value;
}
