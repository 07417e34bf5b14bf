// What SET and its satellites share: the three value rules, the SET error,
// the walk over the set-change listeners and the century flag's reading of a
// date format.
#pragma once

#include <cstdint>

#include "frame/frame.h"

// The SET error: the value given does not suit the setting.
inline constexpr int32_t SET_ERROR_SUBCODE = 2020;

// Logical rule: a logical item gives its value, a text beginning with "ON"
// (any case) true, one beginning with "OFF" false; anything else `fallback`.
bool setLogicalRule(const Item* item, bool fallback);
// Whether the numeric rule reads the item: a number, a date, a counter or a
// one-character text.
inline bool setIsNumeric(const Item* item) {
  return itemIsNumCompat(item);
}
// String rule: a text replaces the value by a heap copy of at most 65,535
// bytes, nil makes it empty, anything else leaves it.
void setStringRule(VMEngine* vm, char*& value, const Item* item);
// Replaces a string setting by a heap copy of `length` bytes of `text`.
void setStoreText(VMEngine* vm, char*& value, const char* text, uint32_t length);
// The text of a string setting; a missing value reads as "".
inline const char* setText(const char* value) {
  return value ? value : "";
}

// The SET error, listing parameters 1 and 2 as passed.
void setRaiseError(VMEngine* vm);
// Calls every set-change listener with the setting and the phase.
void setNotify(VMEngine* vm, int32_t setting, int32_t phase);
// The century flag a date format implies: four or more letters in its first run of Y.
bool setCenturyOfFormat(const char* format);
