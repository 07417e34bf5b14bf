// The Windows ANSI code page of the library's texts, CP1251, beside Unicode:
// what a .reg file of the 5.00 form holds and how the registry compares names.
#pragma once

#include <cstdint>

// The Unicode character of a byte (0x98, unassigned, stands for U+0098 as Windows maps it).
uint16_t cp1251ToUnicode(unsigned char byte);
// The byte of a Unicode character, or -1 when CP1251 has none.
int cp1251FromUnicode(uint32_t code);
// A byte upper-cased as Windows compares registry names: Latin and every
// Cyrillic letter of the code page.
unsigned char cp1251Upper(unsigned char byte);
