// Text, code-page, language and date operations of the host.
#pragma once

#include <cstdint>

#include "kovo/export.h"
#include "kovo/vmengine.h"

// ---- Strings -----------------------------------------------------------------
// Skips leading white space (blank, tab, line feed, carriage return); *length
// is reduced to match.
KOVO_HOST_API const char* strLTrim(const char* text, uint32_t* length);
// Length without trailing blanks; with anySpace, tabs, line feeds and carriage
// returns count as blanks too.
KOVO_HOST_API uint32_t strRTrimLen(const char* text, uint32_t length, bool anySpace);
KOVO_HOST_API const char* strAllTrim(const char* text, uint32_t* length);
// Case mapping by the current code page; dst may equal src.
KOVO_HOST_API void strUpperCopy(VMEngine* vm, char* dst, const char* src, uint32_t length);
KOVO_HOST_API void strLowerCopy(VMEngine* vm, char* dst, const char* src, uint32_t length);
// 1-based position of the first occurrence of sub in text, 0 when there is none
// or sub is empty.
KOVO_HOST_API uint32_t hb_strAt(const char* sub, uint32_t subLength, const char* text,
                                uint32_t length);
// "*" matches any run, "?" any one character; the whole text must match.
KOVO_HOST_API bool hb_strMatchWild(const char* text, const char* pattern);
// A basic regular expression (for regcomp with flags 0) that matches the
// whole of a name the wildcard mask matches: "*" any run, "?" one character,
// everything else itself. Without keepCase letters are taken in upper case,
// as memory-variable names are kept. A block of the context's heap (vmFree).
KOVO_HOST_API char* Wild2RegEx(VMEngine* vm, const char* mask, bool keepCase);
// The number at the start of a text (blanks, sign, digits, point); 0 when none.
KOVO_HOST_API double strVal(const char* text, uint32_t length);
KOVO_HOST_API int64_t hb_strValInt(const char* text, int* overflow);

// ---- Code pages ------------------------------------------------------------------
struct CodePage {
  const char* id;
  const char* upperLetters;  // the national upper-case letters, in alphabetical order
  const char* lowerLetters;  // their lower-case partners, in the same order
  unsigned char upper[256];
  unsigned char lower[256];
};

KOVO_HOST_API const CodePage* cdpFind(const char* id);
KOVO_HOST_API const CodePage* cdpCurrent(VMEngine* vm);
// Selects a code page by identifier; returns the identifier of the previous one,
// or null (selecting nothing) when the identifier is unknown.
KOVO_HOST_API const char* cdpSelectID(VMEngine* vm, const char* id);

// ---- Languages ---------------------------------------------------------------------
inline constexpr int LANG_ITEM_YESNO = 36;

KOVO_HOST_API const char* langID(VMEngine* vm);
KOVO_HOST_API const char* langName(VMEngine* vm);
// Selects a language by identifier; returns the previous identifier, or null
// (selecting nothing) when the identifier is unknown.
KOVO_HOST_API const char* langSelectID(VMEngine* vm, const char* id);
// Item `index` of the current language, "" for an index it has no text for.
KOVO_HOST_API const char* langDGetItem(VMEngine* vm, int index);
KOVO_HOST_API const char* langDGetErrorDesc(VMEngine* vm, int32_t genCode);

// ---- Dates -----------------------------------------------------------------------------
// Julian day numbers; 0 is the empty date.
KOVO_HOST_API int32_t dateEncode(int year, int month, int day);
KOVO_HOST_API void dateDecode(int32_t julian, int* year, int* month, int* day);
// "YYYYMMDD" to a Julian day; 0 for 8 blanks or a text that is no valid date.
KOVO_HOST_API int32_t dateEncStr(const char* yyyymmdd);
// Writes "YYYYMMDD" and a zero byte into buffer (9 bytes); 8 blanks for 0.
KOVO_HOST_API char* dateDecStr(char* buffer, int32_t julian);
// Formats "YYYYMMDD" by a SET DATEFORMAT picture into buffer (format length + 1 bytes).
KOVO_HOST_API char* dateFormat(char* buffer, const char* yyyymmdd, const char* format);
// Seconds since local midnight, with fractions.
KOVO_HOST_API double dateSeconds();
// The process's CPU seconds: 1 user time, 2 system time, any other mode both.
KOVO_HOST_API double secondsCPU(int mode);

// Translates the national letters of `from` into those of `to`, letter by
// letter in alphabetical order; other bytes are left as they are.
KOVO_HOST_API void cdpTranslate(char* text, uint32_t length, const CodePage* from,
                                const CodePage* to);
