// Code pages (CP1251, the default, and CP866) and their case mapping.
#include <cstring>

#include "internals.h"
#include "kovo/byte_vector.h"
#include "kovo/host_text.h"

namespace {

// The Russian alphabet in each code page, Yo in its alphabetical place.
const char CP1251_UPPER[] =
    "\xC0\xC1\xC2\xC3\xC4\xC5\xA8\xC6\xC7\xC8\xC9\xCA\xCB\xCC\xCD\xCE\xCF"
    "\xD0\xD1\xD2\xD3\xD4\xD5\xD6\xD7\xD8\xD9\xDA\xDB\xDC\xDD\xDE\xDF";
const char CP1251_LOWER[] =
    "\xE0\xE1\xE2\xE3\xE4\xE5\xB8\xE6\xE7\xE8\xE9\xEA\xEB\xEC\xED\xEE\xEF"
    "\xF0\xF1\xF2\xF3\xF4\xF5\xF6\xF7\xF8\xF9\xFA\xFB\xFC\xFD\xFE\xFF";
const char CP866_UPPER[] =
    "\x80\x81\x82\x83\x84\x85\xF0\x86\x87\x88\x89\x8A\x8B\x8C\x8D\x8E\x8F"
    "\x90\x91\x92\x93\x94\x95\x96\x97\x98\x99\x9A\x9B\x9C\x9D\x9E\x9F";
const char CP866_LOWER[] =
    "\xA0\xA1\xA2\xA3\xA4\xA5\xF1\xA6\xA7\xA8\xA9\xAA\xAB\xAC\xAD\xAE\xAF"
    "\xE0\xE1\xE2\xE3\xE4\xE5\xE6\xE7\xE8\xE9\xEA\xEB\xEC\xED\xEE\xEF";

CodePage makeCodePage(const char* id, const char* upperLetters, const char* lowerLetters) {
  CodePage page{id, upperLetters, lowerLetters, {}, {}};
  for (int c = 0; c < 256; c++) {
    page.upper[c] = static_cast<unsigned char>(c >= 'a' && c <= 'z' ? c - 32 : c);
    page.lower[c] = static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
  }
  size_t count = std::strlen(upperLetters);
  for (size_t i = 0; i < count; i++) {
    auto upper = static_cast<unsigned char>(upperLetters[i]);
    auto lower = static_cast<unsigned char>(lowerLetters[i]);
    page.upper[lower] = upper;
    page.lower[upper] = lower;
  }
  return page;
}

const CodePage* codePages() {
  static const CodePage pages[] = {
      makeCodePage("CP1251", CP1251_UPPER, CP1251_LOWER),
      makeCodePage("CP866", CP866_UPPER, CP866_LOWER),
  };
  return pages;
}

constexpr size_t CODE_PAGE_COUNT = 2;

}  // namespace

const CodePage* cdpFind(const char* id) {
  if (!id) return nullptr;
  const CodePage* pages = codePages();
  for (size_t i = 0; i < CODE_PAGE_COUNT; i++) {
    if (strcasecmp(pages[i].id, id) == 0) return &pages[i];
  }
  return nullptr;
}

const CodePage* cdpCurrent(VMEngine* vm) {
  return vm->internals->codePage;
}

const char* cdpSelectID(VMEngine* vm, const char* id) {
  const CodePage* page = cdpFind(id);
  if (!page) return nullptr;
  const char* previous = vm->internals->codePage->id;
  vm->internals->codePage = page;
  return previous;
}

namespace {

// Every code page keeps its national letters in the upper half, so the lower
// half maps as plain ASCII: sixteen bytes without a high byte among them are
// converted at once, and only those with national text go through the table
// byte by byte.
void mapCase(const unsigned char* table, unsigned char firstLetter, char* dst, const char* src,
             uint32_t length) {
  const ByteVector first = repeatByte(firstLetter);
  const ByteVector letterCount = repeatByte(26);
  const ByteVector caseBit = repeatByte(0x20);
  const ByteVector highBit = repeatByte(0x80);
  uint32_t i = 0;
  for (; i + BYTE_VECTOR_SIZE <= length; i += BYTE_VECTOR_SIZE) {
    ByteVector bytes = loadBytes(src + i);
    if (anyLane(bytes & highBit)) {
      for (size_t j = i; j < i + BYTE_VECTOR_SIZE; j++)
        dst[j] = static_cast<char>(table[static_cast<unsigned char>(src[j])]);
    } else {
      auto isLetter = reinterpret_cast<ByteVector>(bytes - first < letterCount);
      storeBytes(dst + i, bytes ^ (isLetter & caseBit));
    }
  }
  for (; i < length; i++)
    dst[i] = static_cast<char>(table[static_cast<unsigned char>(src[i])]);
}

}  // namespace

void strUpperCopy(VMEngine* vm, char* dst, const char* src, uint32_t length) {
  mapCase(vm->internals->codePage->upper, 'a', dst, src, length);
}

void strLowerCopy(VMEngine* vm, char* dst, const char* src, uint32_t length) {
  mapCase(vm->internals->codePage->lower, 'A', dst, src, length);
}

void cdpTranslate(char* text, uint32_t length, const CodePage* from, const CodePage* to) {
  unsigned char map[256];
  for (int c = 0; c < 256; c++)
    map[c] = static_cast<unsigned char>(c);
  const char* lists[2][2] = {{from->upperLetters, to->upperLetters},
                             {from->lowerLetters, to->lowerLetters}};
  for (auto& list : lists) {
    for (size_t i = 0; list[0][i] && list[1][i]; i++) {
      map[static_cast<unsigned char>(list[0][i])] = static_cast<unsigned char>(list[1][i]);
    }
  }
  for (uint32_t i = 0; i < length; i++) {
    text[i] = static_cast<char>(map[static_cast<unsigned char>(text[i])]);
  }
}
