// New random GUIDs in the memory layout of the Windows GUID.
#pragma once

#include <cstdint>

inline constexpr uint32_t GUID_SIZE = 16;

struct Guid {
  uint8_t bytes[GUID_SIZE];
};

// A new version-4 GUID; false, with the bytes left zero, when the random
// source fails.
bool newGuid(Guid* guid);
// `count` bytes read as a little-endian number.
uint32_t littleEndian(const uint8_t* bytes, int count);
