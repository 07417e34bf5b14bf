#include "os/cp1251.h"

#include <array>

namespace {

// The upper half, 0x80 to 0xBF; 0xC0 to 0xFF are U+0410 to U+044F in order.
constexpr uint16_t HIGH_HALF[64] = {
    0x0402, 0x0403, 0x201A, 0x0453, 0x201E, 0x2026, 0x2020, 0x2021, 0x20AC, 0x2030, 0x0409,
    0x2039, 0x040A, 0x040C, 0x040B, 0x040F, 0x0452, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x0098, 0x2122, 0x0459, 0x203A, 0x045A, 0x045C, 0x045B, 0x045F, 0x00A0,
    0x040E, 0x045E, 0x0408, 0x00A4, 0x0490, 0x00A6, 0x00A7, 0x0401, 0x00A9, 0x0404, 0x00AB,
    0x00AC, 0x00AD, 0x00AE, 0x0407, 0x00B0, 0x00B1, 0x0406, 0x0456, 0x0491, 0x00B5, 0x00B6,
    0x00B7, 0x0451, 0x2116, 0x0454, 0x00BB, 0x0458, 0x0405, 0x0455, 0x0457};

uint32_t unicodeUpper(uint32_t code) {
  if (code >= 'a' && code <= 'z') return code - 0x20;
  if (code >= 0x0430 && code <= 0x044F) return code - 0x20;
  if (code >= 0x0450 && code <= 0x045F) return code - 0x50;
  if (code == 0x0491) return 0x0490;
  return code;
}

// Derived from the character map, so the two can never disagree.
std::array<unsigned char, 256> makeUpperTable() {
  std::array<unsigned char, 256> table{};
  for (int byte = 0; byte < 256; byte++) {
    int upper = cp1251FromUnicode(unicodeUpper(cp1251ToUnicode(static_cast<unsigned char>(byte))));
    table[byte] = static_cast<unsigned char>(upper);
  }
  return table;
}

}  // namespace

uint16_t cp1251ToUnicode(unsigned char byte) {
  if (byte < 0x80) return byte;
  if (byte >= 0xC0) return static_cast<uint16_t>(0x0410 + (byte - 0xC0));
  return HIGH_HALF[byte - 0x80];
}

int cp1251FromUnicode(uint32_t code) {
  if (code < 0x80) return static_cast<int>(code);
  if (code >= 0x0410 && code <= 0x044F) return static_cast<int>(0xC0 + (code - 0x0410));
  for (int i = 0; i < 64; i++) {
    if (HIGH_HALF[i] == code) return 0x80 + i;
  }
  return -1;
}

unsigned char cp1251Upper(unsigned char byte) {
  static const std::array<unsigned char, 256> table = makeUpperTable();
  return table[byte];
}
