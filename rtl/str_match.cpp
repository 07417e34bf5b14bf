// Likeness of texts: WILDMATCH, SOUNDEX.
#include <cstring>

#include "str_result.h"

namespace {

// The classic sound codes of the letters A to Z; 0 for the vowels and Y,
// which separate, and for H and W, which neither code nor separate.
const char SOUND_CODES[] = "01230120022455012623010202";

bool isLetterC(unsigned char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

unsigned char upperC(unsigned char c) {
  return c >= 'a' && c <= 'z' ? static_cast<unsigned char>(c - 'a' + 'A') : c;
}

}  // namespace

// WILDMATCH(pattern, value, [exact]): whether the value matches the pattern,
// in which "*" stands for any run of bytes and "?" for any one byte. Without
// exact (or with it false) the pattern needs to match only the beginning of
// the value, as if it ended in "*"; with exact the whole value. Both texts
// end at their first zero byte. Anything but two strings gives false.
KOVO_FUNC(WILDMATCH) {
  const Item* pattern = paramItem(vm, 1, HB_IT_STRING);
  const Item* value = paramItem(vm, 2, HB_IT_STRING);
  bool matches = false;
  if (pattern && value) {
    if (paramSwitch(vm, 3)) {
      matches = hb_strMatchWild(itemStrPtr(value), itemStrPtr(pattern));
    } else {
      size_t length = strnlen(itemStrPtr(pattern), itemStrLen(pattern));
      char* prefixPattern = newText(vm, length + 1);
      std::memcpy(prefixPattern, itemStrPtr(pattern), length);
      prefixPattern[length] = '*';
      matches = hb_strMatchWild(itemStrPtr(value), prefixPattern);
      vmFree(vm, prefixPattern);
    }
  }
  itemPutL(vm, returnItem(vm), matches);
}

// SOUNDEX(text): the classic four-byte sound code: the first letter in upper
// case and the codes of the following consonants, padded with "0". Only the
// ASCII letters count; every other byte is passed over as if it were not
// there. A letter whose code equals that of the letter before it, or of the
// letter before an H or W between them, is not coded again; a vowel or Y
// between them makes it coded again ("Ashcraft" is A261, "Tymczak" T522).
// A text without letters gives "0000", anything but a string the empty text.
KOVO_FUNC(SOUNDEX) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  if (!text) return returnEmptyText(vm);
  char code[5] = "0000";
  const auto* bytes = reinterpret_cast<const unsigned char*>(itemStrPtr(text));
  uint32_t length = itemStrLen(text);
  uint32_t i = 0;
  while (i < length && !isLetterC(bytes[i]))
    i++;
  if (i < length) {
    unsigned char letter = upperC(bytes[i++]);
    code[0] = static_cast<char>(letter);
    char previous = SOUND_CODES[letter - 'A'];
    for (int filled = 1; i < length && filled < 4; i++) {
      if (!isLetterC(bytes[i])) continue;
      letter = upperC(bytes[i]);
      char sound = SOUND_CODES[letter - 'A'];
      if (letter == 'H' || letter == 'W') continue;
      if (sound != '0' && sound != previous) code[filled++] = sound;
      previous = sound;
    }
  }
  itemPutCL(vm, returnItem(vm), code, 4);
}
