// Character classes of the first byte: ISALPHA ... ISIDENTIFIER, and the yes
// and no answers ISAFFIRM and ISNEGATIVE.
//
// The classes are those of the "C" locale, whatever locale the process runs
// in; the letters of the current code page count as letters too.
#include <cstring>

#include "str_result.h"

namespace {

bool isUpperC(unsigned char c) {
  return c >= 'A' && c <= 'Z';
}
bool isLowerC(unsigned char c) {
  return c >= 'a' && c <= 'z';
}
bool isDigitC(unsigned char c) {
  return c >= '0' && c <= '9';
}
bool isAlphaC(unsigned char c) {
  return isUpperC(c) || isLowerC(c);
}
bool isAlnumC(unsigned char c) {
  return isAlphaC(c) || isDigitC(c);
}
bool isGraphC(unsigned char c) {
  return c > ' ' && c < 0x7F;
}

// Byte 0 ends the list, so it is never found in it.
bool inLetterList(const char* list, unsigned char c) {
  return c != 0 && std::strchr(list, c) != nullptr;
}

// The first byte of a string argument; of anything else, the zero byte that
// ends the empty text. An array throws the reader's exception.
unsigned char firstByte(VMEngine* vm) {
  return static_cast<unsigned char>(paramXPChar(vm, 1)[0]);
}

void returnLogical(VMEngine* vm, bool value) {
  itemPutL(vm, returnItem(vm), value);
}

// Whether the first byte of a non-empty string argument, in upper case, is
// byte `index` of the language's yes and no letters.
bool answerIs(VMEngine* vm, size_t index) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  if (!text || itemStrLen(text) == 0) return false;
  const char* letters = langDGetItem(vm, LANG_ITEM_YESNO);
  if (std::strlen(letters) <= index) return false;
  auto c = static_cast<unsigned char>(itemStrPtr(text)[0]);
  if (isLowerC(c)) c = static_cast<unsigned char>(c - 'a' + 'A');
  return c == static_cast<unsigned char>(letters[index]);
}

}  // namespace

KOVO_FUNC(ISALPHA) {
  unsigned char c = firstByte(vm);
  const CodePage* page = cdpCurrent(vm);
  returnLogical(vm, isAlphaC(c) || inLetterList(page->upperLetters, c) ||
                        inLetterList(page->lowerLetters, c));
}

KOVO_FUNC(ISUPPER) {
  unsigned char c = firstByte(vm);
  returnLogical(vm, isUpperC(c) || inLetterList(cdpCurrent(vm)->upperLetters, c));
}

KOVO_FUNC(ISLOWER) {
  unsigned char c = firstByte(vm);
  returnLogical(vm, isLowerC(c) || inLetterList(cdpCurrent(vm)->lowerLetters, c));
}

KOVO_FUNC(ISDIGIT) {
  returnLogical(vm, isDigitC(firstByte(vm)));
}

KOVO_FUNC(ISALNUM) {
  returnLogical(vm, isAlnumC(firstByte(vm)));
}

KOVO_FUNC(ISCNTRL) {
  unsigned char c = firstByte(vm);
  returnLogical(vm, c < ' ' || c == 0x7F);
}

KOVO_FUNC(ISGRAPH) {
  returnLogical(vm, isGraphC(firstByte(vm)));
}

KOVO_FUNC(ISPRINT) {
  unsigned char c = firstByte(vm);
  returnLogical(vm, c == ' ' || isGraphC(c));
}

KOVO_FUNC(ISPUNCT) {
  unsigned char c = firstByte(vm);
  returnLogical(vm, isGraphC(c) && !isAlnumC(c));
}

KOVO_FUNC(ISSPACE) {
  unsigned char c = firstByte(vm);
  returnLogical(vm, c == ' ' || (c >= '\t' && c <= '\r'));
}

KOVO_FUNC(ISXDIGIT) {
  unsigned char c = firstByte(vm);
  returnLogical(vm, isDigitC(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f'));
}

KOVO_FUNC(ISASCII) {
  returnLogical(vm, firstByte(vm) < 0x80);
}

// Leading underscores, then an ASCII letter, then ASCII letters, digits and
// underscores up to the first zero byte. Anything but a string is no
// identifier; an array throws the reader's exception.
KOVO_FUNC(ISIDENTIFIER) {
  const char* text = paramPChar(vm, 1);
  bool identifier = false;
  if (text) {
    auto* p = reinterpret_cast<const unsigned char*>(text);
    while (*p == '_')
      p++;
    identifier = isAlphaC(*p);
    if (identifier) {
      while (isAlnumC(*p) || *p == '_')
        p++;
      identifier = *p == '\0';
    }
  }
  returnLogical(vm, identifier);
}

KOVO_FUNC(ISAFFIRM) {
  returnLogical(vm, answerIs(vm, 0));
}

// The no letter follows the yes letter and one separating byte.
KOVO_FUNC(ISNEGATIVE) {
  returnLogical(vm, answerIs(vm, 2));
}
