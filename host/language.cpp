// Languages: identifiers, a few texts and the standard error descriptions.
#include <cstring>

#include "internals.h"
#include "kovo/host_errors.h"
#include "kovo/host_text.h"

struct Language {
  const char* id;
  const char* name;
  const char* yesNo;  // item 36: the yes and no letters, separated by one byte
  const char* errorTexts[26];
};

namespace {

// Russian texts are CP1251 bytes.
const Language LANGUAGES[] = {
    {"EN",
     "English",
     "Y,N",
     {"",
      "Argument error",
      "Bound error",
      "String overflow",
      "Numeric overflow",
      "Zero divisor",
      "Numeric error",
      "Syntax error",
      "Operation too complex",
      "",
      "",
      "Memory low",
      "Undefined function",
      "No exported method",
      "Variable does not exist",
      "Alias does not exist",
      "No exported variable",
      "",
      "",
      "",
      "Create error",
      "Open error",
      "Close error",
      "Read error",
      "Write error",
      "Print error"}},
    {"RU",
     "\xD0\xF3\xF1\xF1\xEA\xE8\xE9",
     "\xC4,\xCD",
     {"",
      "\xCE\xF8\xE8\xE1\xEA\xE0 \xE0\xF0\xE3\xF3\xEC\xE5\xED\xF2\xE0",
      "\xCE\xF8\xE8\xE1\xEA\xE0 \xE3\xF0\xE0\xED\xE8\xF6",
      "\xCF\xE5\xF0\xE5\xEF\xEE\xEB\xED\xE5\xED\xE8\xE5 \xF1\xF2\xF0\xEE\xEA\xE8",
      "\xD7\xE8\xF1\xEB\xEE\xE2\xEE\xE5 \xEF\xE5\xF0\xE5\xEF\xEE\xEB\xED\xE5\xED\xE8\xE5",
      "\xC4\xE5\xEB\xE5\xED\xE8\xE5 \xED\xE0 \xED\xEE\xEB\xFC",
      "",
      "",
      "",
      "",
      "",
      "\xCD\xE5\xE4\xEE\xF1\xF2\xE0\xF2\xEE\xF7\xED\xEE \xEF\xE0\xEC\xFF\xF2\xE8",
      "",
      "",
      "",
      "",
      "",
      "",
      "",
      "",
      "",
      "",
      "",
      "",
      "",
      ""}},
};

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

const char* langDGetErrorDesc(VMEngine* vm, int32_t genCode) {
  if (genCode < 0 || genCode >= 26) return "";
  const char* text = vm->internals->language->errorTexts[genCode];
  return *text ? text : LANGUAGES[0].errorTexts[genCode];
}

const char* errDescription(int32_t genCode) {
  if (genCode < 0 || genCode >= 26) return "";
  return LANGUAGES[0].errorTexts[genCode];
}
