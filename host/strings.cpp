// Trimming, searching, wildcard matching and number reading on byte strings.
#include <cstring>

#include "kovo/host_text.h"

namespace {

bool isWhite(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

}  // namespace

const char* strLTrim(const char* text, uint32_t* length) {
  uint32_t skipped = 0;
  while (skipped < *length && isWhite(text[skipped]))
    skipped++;
  *length -= skipped;
  return text + skipped;
}

uint32_t strRTrimLen(const char* text, uint32_t length, bool anySpace) {
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
  const void* found = memmem(text, length, sub, subLength);
  return found ? static_cast<uint32_t>(static_cast<const char*>(found) - text) + 1 : 0;
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
