// Hexadecimal digits as the host and the library write and read them.
#pragma once

#include <cstdint>

inline constexpr char UPPER_HEX_DIGITS[] = "0123456789ABCDEF";

// The value of a digit "0"-"9", "A"-"F" or "a"-"f"; -1 for any other character.
inline int hexDigitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}
