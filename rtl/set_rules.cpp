// The value rules of the SET table and what every setting shares.
#include "rtl/set_rules.h"

#include <strings.h>

#include <cstring>

namespace {

// The longest text a string setting keeps.
constexpr uint32_t SET_TEXT_LIMIT = 65535;

bool startsWithWord(const Item* item, const char* word, uint32_t wordLength) {
  return itemStrLen(item) >= wordLength && strncasecmp(itemStrPtr(item), word, wordLength) == 0;
}

}  // namespace

bool setLogicalRule(const Item* item, bool fallback) {
  if (!item) return fallback;
  if (item->type == HB_IT_LOGICAL) return item->item.asLogical.value != 0;
  if (!itemIsString(item)) return fallback;
  // "ONWARD" counts as on: only the first two letters are looked at.
  if (startsWithWord(item, "ON", 2)) return true;
  if (startsWithWord(item, "OFF", 3)) return false;
  return fallback;
}

void setStoreText(VMEngine* vm, char*& value, const char* text, uint32_t length) {
  value = static_cast<char*>(vmRealloc(vm, value, size_t{length} + 1));
  std::memcpy(value, text, length);
  value[length] = '\0';
}

void setStringRule(VMEngine* vm, char*& value, const Item* item) {
  if (!item) return;
  if (itemIsString(item)) {
    uint32_t length = itemStrLen(item);
    setStoreText(vm, value, itemStrPtr(item), length < SET_TEXT_LIMIT ? length : SET_TEXT_LIMIT);
  } else if (item->type == HB_IT_NIL) {
    setStoreText(vm, value, "", 0);
  }
}

void setRaiseError(VMEngine* vm) {
  argErrorNoSubst(vm, SET_ERROR_SUBCODE, "SET", 2);
}

void setNotify(VMEngine* vm, int32_t setting, int32_t phase) {
  for (SetListener* node = vm->set.listeners; node; node = node->next)
    node->callback(setting, phase);
}

bool setCenturyOfFormat(const char* format) {
  const char* run = format;
  while (*run && *run != 'Y' && *run != 'y')
    run++;
  size_t count = 0;
  while (run[count] == 'Y' || run[count] == 'y')
    count++;
  return count >= 4;
}
