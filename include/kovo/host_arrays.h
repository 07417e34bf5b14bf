// Host operations on arrays and hashes. Indexes are 1-based; hash positions too.
#pragma once

#include <cstdint>

#include "kovo/export.h"
#include "kovo/item.h"
#include "kovo/vmengine.h"

KOVO_HOST_API bool arrayNew(VMEngine* vm, Item* dst, uint32_t length);
// A new array item, released with xItemRelease.
KOVO_HOST_API Item* itemArrayNew(VMEngine* vm, uint32_t length);
KOVO_HOST_API bool arrayGet(VMEngine* vm, const Item* array, uint32_t index, Item* dst);
KOVO_HOST_API bool arraySet(VMEngine* vm, Item* array, uint32_t index, const Item* src);
KOVO_HOST_API Item* itemArrayPut(VMEngine* vm, Item* array, uint32_t index, const Item* src);
KOVO_HOST_API bool arrayAdd(VMEngine* vm, Item* array, const Item* src);
KOVO_HOST_API bool arrayAddForward(VMEngine* vm, Item* array, Item* src);
KOVO_HOST_API bool arraySetForward(VMEngine* vm, Item* array, uint32_t index, Item* src);
KOVO_HOST_API bool arrayIns(VMEngine* vm, Item* array, uint32_t index);
KOVO_HOST_API bool arraySize(VMEngine* vm, Item* array, uint32_t length);
// Deep copy of nested arrays; hashes and objects inside are copied too.
KOVO_HOST_API Item* arrayClone(VMEngine* vm, const Item* array);
KOVO_HOST_API Item* arrayGetItemPtr(const Item* array, uint32_t index);
KOVO_HOST_API int32_t arrayGetNI(const Item* array, uint32_t index);
KOVO_HOST_API const char* arrayGetCPtr(const Item* array, uint32_t index);
KOVO_HOST_API void* arrayGetPtr(const Item* array, uint32_t index);

KOVO_HOST_API bool hashNew(VMEngine* vm, Item* dst);
KOVO_HOST_API uint32_t hashLen(const Item* hash);
KOVO_HOST_API Item* hashGetKeyAt(const Item* hash, uint32_t position);
KOVO_HOST_API Item* hashGetValueAt(const Item* hash, uint32_t position);
// The value stored under an equal key, or null.
KOVO_HOST_API Item* hashGetItemPtr(const Item* hash, const Item* key);
// Adds a pair, moving key and value into the hash; an equal key has its value
// replaced. `flags` is all ones in every call the library makes.
KOVO_HOST_API bool hashAddForward(VMEngine* vm, Item* hash, uint32_t flags, Item* key, Item* value);
