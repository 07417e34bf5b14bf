// Trimming, searching, wildcard matching and number reading on byte strings.
#include <cctype>
#include <cstring>

#include "byte_search.h"
#include "kovo/byte_vector.h"
#include "kovo/host_items.h"
#include "kovo/host_text.h"

namespace {

bool isWhite(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// Fields padded to their width end in long runs of blanks: they are passed
// over eight at a time.
bool eightBlanks(const char* text) {
  uint64_t word;
  std::memcpy(&word, text, 8);
  return word == 0x2020202020202020u;
}

// The first occurrence of a pattern of two bytes or more. Sixteen start
// positions are tested at once on the pattern's first and last bytes, and
// the few that pass are compared in full. Should the full comparisons come to
// cost more than the scan (texts like "aaaa...a" searched for "aaab"), the
// rest of the text is left to searchBytes, which is linear in every case.
const char* findPattern(const char* text, size_t length, const char* pattern,
                        size_t patternLength) {
  const ByteVector first = repeatByte(static_cast<unsigned char>(pattern[0]));
  const ByteVector last = repeatByte(static_cast<unsigned char>(pattern[patternLength - 1]));
  size_t compared = 0;
  size_t start = 0;
  for (; start + patternLength - 1 + BYTE_VECTOR_SIZE <= length; start += BYTE_VECTOR_SIZE) {
    uint32_t candidates = laneMask(
        reinterpret_cast<ByteVector>((loadBytes(text + start) == first) &
                                     (loadBytes(text + start + patternLength - 1) == last)));
    for (; candidates != 0; candidates &= candidates - 1) {
      compared += patternLength;
      const char* at = text + start + __builtin_ctz(candidates);
      if (std::memcmp(at + 1, pattern + 1, patternLength - 2) == 0) return at;
    }
    if (compared > 2 * start + 4096) break;
  }
  return searchBytes(text + start, length - start, pattern, patternLength);
}

}  // namespace

const char* strLTrim(const char* text, uint32_t* length) {
  uint32_t skipped = 0;
  while (*length - skipped >= 8 && eightBlanks(text + skipped))
    skipped += 8;
  while (skipped < *length && isWhite(text[skipped]))
    skipped++;
  *length -= skipped;
  return text + skipped;
}

uint32_t strRTrimLen(const char* text, uint32_t length, bool anySpace) {
  while (length >= 8 && eightBlanks(text + length - 8))
    length -= 8;
  if (anySpace) {
    while (length > 0 && isWhite(text[length - 1]))
      length--;
  } else {
    while (length > 0 && text[length - 1] == ' ')
      length--;
  }
  return length;
}

const char* strAllTrim(const char* text, uint32_t* length) {
  *length = strRTrimLen(text, *length, false);
  return strLTrim(text, length);
}

uint32_t hb_strAt(const char* sub, uint32_t subLength, const char* text, uint32_t length) {
  if (subLength == 0 || subLength > length) return 0;
  const char* found = subLength == 1 ? static_cast<const char*>(std::memchr(text, sub[0], length))
                                     : findPattern(text, length, sub, subLength);
  return found ? static_cast<uint32_t>(found - text) + 1 : 0;
}

bool hb_strMatchWild(const char* text, const char* pattern) {
  // Greedy matching that backtracks only to the last "*": linear in practice.
  const char* starPattern = nullptr;
  const char* starText = nullptr;
  while (*text) {
    if (*pattern == '*') {
      starPattern = ++pattern;
      starText = text;
    } else if (*pattern == '?' || *pattern == *text) {
      pattern++;
      text++;
    } else if (starPattern) {
      pattern = starPattern;
      text = ++starText;
    } else {
      return false;
    }
  }
  while (*pattern == '*')
    pattern++;
  return *pattern == '\0';
}

double strVal(const char* text, uint32_t length) {
  uint32_t i = 0;
  while (i < length && isWhite(text[i]))
    i++;
  bool negative = false;
  if (i < length && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';
  double value = 0.0;
  while (i < length && text[i] >= '0' && text[i] <= '9')
    value = value * 10 + (text[i++] - '0');
  if (i < length && text[i] == '.') {
    double scale = 1.0;
    for (i++; i < length && text[i] >= '0' && text[i] <= '9'; i++) {
      scale /= 10;
      value += (text[i] - '0') * scale;
    }
  }
  return negative ? -value : value;
}

int64_t hb_strValInt(const char* text, int* overflow) {
  const char* p = text;
  while (isWhite(*p))
    p++;
  bool negative = false;
  if (*p == '-' || *p == '+') negative = *p++ == '-';
  uint64_t value = 0;
  *overflow = 0;
  for (; *p >= '0' && *p <= '9'; p++) {
    uint64_t digit = static_cast<uint64_t>(*p - '0');
    if (value > (static_cast<uint64_t>(INT64_MAX) + (negative ? 1 : 0) - digit) / 10) {
      *overflow = 1;
      return 0;
    }
    value = value * 10 + digit;
  }
  return negative ? static_cast<int64_t>(0 - value) : static_cast<int64_t>(value);
}

char* Wild2RegEx(VMEngine* vm, const char* mask, bool keepCase) {
  // At most two bytes per mask character, the anchors and the closing zero.
  size_t length = std::strlen(mask);
  auto* expression = static_cast<char*>(vmAlloc(vm, length * 2 + 3));
  char* out = expression;
  *out++ = '^';
  for (const char* c = mask; *c; c++) {
    switch (*c) {
      case '*':
        *out++ = '.';
        *out++ = '*';
        break;
      case '?':
        *out++ = '.';
        break;
      // The characters that mean something in a basic expression stand for
      // themselves once escaped.
      case '.':
      case '[':
      case '\\':
      case '^':
      case '$':
        *out++ = '\\';
        *out++ = *c;
        break;
      default:
        *out++ = keepCase ? *c : static_cast<char>(std::toupper(static_cast<unsigned char>(*c)));
    }
  }
  *out++ = '$';
  *out = '\0';
  return expression;
}
