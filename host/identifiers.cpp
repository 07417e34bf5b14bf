// The 22-character form of an identifier.
#include "kovo/host.h"
#include "kovo/host_encoding.h"

char* genguid22(VMEngine* vm, const uint8_t guid[16]) {
  static const char ALPHABET[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
  auto* text = static_cast<char*>(vmAlloc(vm, 23));
  char* out = text;
  // Five groups of three bytes give 20 characters; the last byte gives two.
  for (int i = 0; i < 15; i += 3) {
    uint32_t group = uint32_t{guid[i]} << 16 | uint32_t{guid[i + 1]} << 8 | guid[i + 2];
    for (int shift = 18; shift >= 0; shift -= 6)
      *out++ = ALPHABET[(group >> shift) & 0x3F];
  }
  *out++ = ALPHABET[guid[15] >> 2];
  *out++ = ALPHABET[(guid[15] & 0x03) << 4];
  return text;
}
