// State of a context that only the host sees.
#pragma once

#include <cstdarg>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "kovo/host_calls.h"
#include "kovo/host_text.h"
#include "kovo/vmengine.h"

struct Language;
struct FileContext;

// A private variable's creation, so that it can be undone: the symbol, the
// variable created (held by the symbol, or by a later entry that hides it) and
// the variable it hid.
struct PrivateEntry {
  DynSymbol* symbol;
  ValueCell* cell;
  ValueCell* hidden;
  int32_t hiddenScope;
};

// A public variable in creation order; the cell is held by the symbol, or by
// the private entry that hides it.
struct PublicEntry {
  DynSymbol* symbol;
  ValueCell* cell;
};

struct HostInternals {
  std::unordered_map<std::string, std::unique_ptr<DynSymbol>> symbols;
  std::vector<DynSymbol*> symbolOrder;  // creation order, for xdynsymEval
  std::vector<PrivateEntry> privates;
  // Where the privates of each running procedure begin, innermost last; the
  // outermost procedure begins at 0.
  std::vector<uint32_t> procedureBases;
  std::vector<PublicEntry> publics;
  const CodePage* codePage;
  const Language* language;
  FileContext* files = nullptr;  // the file layer's state, made when first needed
};

// The error class: its name and instance variables, in slot order.
struct Class {
  const char* name;
  const char* const* ivars;
  uint32_t ivarCount;
};

// A heap copy of the text, with a zero byte after it.
char* heapString(VMEngine* vm, const std::string& text);

const Class* errorClass();
const Language* defaultLanguage();
void releaseSymbolTable(VMEngine* vm);
// Sends a message to an object whose frame holds `count` parameters.
void objectSend(VMEngine* vm, Item* object, const char* message, uint16_t count);
void memvarReleaseAll(VMEngine* vm);
void setListenersRelease(VMEngine* vm);
// Closes the alternate, extra and printer files that SET left open.
void setCloseOutputFiles(VMEngine* vm);
// A new array of nil items with one holder, for an item to take over.
// An array's first elements share its block, right behind it: a small array
// is one allocation. Growing moves them into a block of their own.
BaseArray* arrayCreate(VMEngine* vm, uint32_t length);
inline Item* arrayInlineItems(BaseArray* array) {
  return reinterpret_cast<Item*>(array + 1);
}
// The `argc` item pointers of a variadic host operation.
std::vector<Item*> collectItems(uint32_t argc, va_list args);
// Declares `argv` holding the trailing item arguments of the enclosing variadic operation.
#define GATHER_ITEMS(argv, argc)         \
  std::vector<Item*> argv;               \
  do {                                   \
    va_list trailing;                    \
    va_start(trailing, argc);            \
    argv = collectItems(argc, trailing); \
    va_end(trailing);                    \
  } while (false)
// Types whose payload holds something that must be let go.
inline constexpr HB_TYPE COMPLEX_TYPES =
    HB_IT_STRING | HB_IT_ARRAY | HB_IT_HASH | HB_IT_BLOCK | HB_IT_BYREF | HB_IT_ELEMREF;
void releaseComplexPayload(Item* item);
// Whether releasing the item has anything to let go of. Constant text, which
// programs pass as arguments all the time, holds nothing.
inline bool holdsPayload(const Item* item) {
  if (!(item->type & COMPLEX_TYPES)) return false;
  return !(item->type & HB_IT_STRING) || item->item.asString.owned;
}
// Item release of the payload alone; the caller resets the type word.
inline void itemReleasePayload(Item* item) {
  if (holdsPayload(item)) releaseComplexPayload(item);
}
inline void clearItem(Item* item) {
  itemReleasePayload(item);
  item->type = HB_IT_NIL;
}
// Item values with payloads that hold references count them here.
void itemRetainPayload(const Item* item);
