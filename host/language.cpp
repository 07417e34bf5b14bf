// Languages: identifiers, a few texts and the standard error descriptions.
#include <cstring>
#include <iterator>

#include "internals.h"
#include "kovo/host_errors.h"
#include "kovo/host_text.h"

struct CodedText {
  int32_t code;
  const char* text;
};

struct Language {
  const char* id;
  const char* name;
  const char* yesNo;  // item 36: the yes and no letters, separated by one byte
  const CodedText* errorTexts;
  size_t errorTextCount;
};

namespace {

const CodedText ENGLISH_ERRORS[] = {
    {EG_ARG, "Argument error"},
    {EG_BOUND, "Bound error"},
    {EG_STROVERFLOW, "String overflow"},
    {EG_NUMOVERFLOW, "Numeric overflow"},
    {EG_ZERODIV, "Zero divisor"},
    {EG_NUMERR, "Numeric error"},
    {EG_SYNTAX, "Syntax error"},
    {EG_COMPLEXITY, "Operation too complex"},
    {EG_MEM, "Memory low"},
    {EG_NOFUNC, "Undefined function"},
    {EG_NOMETHOD, "No exported method"},
    {EG_NOVAR, "Variable does not exist"},
    {EG_NOALIAS, "Alias does not exist"},
    {EG_NOVARMETHOD, "No exported variable"},
    {EG_CREATE, "Create error"},
    {EG_OPEN, "Open error"},
    {EG_CLOSE, "Close error"},
    {EG_READ, "Read error"},
    {EG_WRITE, "Write error"},
    {EG_PRINT, "Print error"},
};

// CP1251 bytes.
const CodedText RUSSIAN_ERRORS[] = {
    {EG_ARG, "\xCE\xF8\xE8\xE1\xEA\xE0 \xE0\xF0\xE3\xF3\xEC\xE5\xED\xF2\xE0"},
    {EG_BOUND, "\xCE\xF8\xE8\xE1\xEA\xE0 \xE3\xF0\xE0\xED\xE8\xF6"},
    {EG_STROVERFLOW, "\xCF\xE5\xF0\xE5\xEF\xEE\xEB\xED\xE5\xED\xE8\xE5 \xF1\xF2\xF0\xEE\xEA\xE8"},
    {EG_ZERODIV, "\xC4\xE5\xEB\xE5\xED\xE8\xE5 \xED\xE0 \xED\xEE\xEB\xFC"},
    {EG_MEM, "\xCD\xE5\xE4\xEE\xF1\xF2\xE0\xF2\xEE\xF7\xED\xEE \xEF\xE0\xEC\xFF\xF2\xE8"},
};

const Language LANGUAGES[] = {
    {"EN", "English", "Y,N", ENGLISH_ERRORS, std::size(ENGLISH_ERRORS)},
    {"RU", "\xD0\xF3\xF1\xF1\xEA\xE8\xE9", "\xC4,\xCD", RUSSIAN_ERRORS, std::size(RUSSIAN_ERRORS)},
};

const char* errorText(const Language& language, int32_t genCode) {
  for (size_t i = 0; i < language.errorTextCount; i++) {
    if (language.errorTexts[i].code == genCode) return language.errorTexts[i].text;
  }
  return nullptr;
}

}  // namespace

const Language* defaultLanguage() {
  return &LANGUAGES[0];
}

const char* langID(VMEngine* vm) {
  return vm->internals->language->id;
}

const char* langName(VMEngine* vm) {
  return vm->internals->language->name;
}

const char* langSelectID(VMEngine* vm, const char* id) {
  if (!id) return nullptr;
  for (const Language& language : LANGUAGES) {
    if (strcasecmp(language.id, id) == 0) {
      const char* previous = vm->internals->language->id;
      vm->internals->language = &language;
      return previous;
    }
  }
  return nullptr;
}

const char* langDGetItem(VMEngine* vm, int index) {
  const Language* language = vm->internals->language;
  switch (index) {
    case 0:
      return language->id;
    case 1:
      return language->name;
    case LANG_ITEM_YESNO:
      return language->yesNo;
    default:
      return "";
  }
}

// The current language's text, or the English one where it has none.
const char* langDGetErrorDesc(VMEngine* vm, int32_t genCode) {
  const char* text = errorText(*vm->internals->language, genCode);
  return text ? text : errDescription(genCode);
}

const char* errDescription(int32_t genCode) {
  const char* text = errorText(LANGUAGES[0], genCode);
  return text ? text : "";
}
