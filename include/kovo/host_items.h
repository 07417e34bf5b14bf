// Host operations on items: memory, putting values, reading values and the
// by-reference stores. Operations that change an item or may allocate take the
// context first; pure readers take the item alone.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kovo/export.h"
#include "kovo/item.h"
#include "kovo/vmengine.h"

// ---- Working memory -------------------------------------------------------
// Every block is zero-filled. A block handed to an item (itemPutCPtr,
// itemPutCRaw, hb_storclenAdopt) must come from here and belongs to the item.

// Never returns null: running out of memory is an unrecoverable error.
KOVO_HOST_API void* vmAlloc(VMEngine* vm, size_t size);
// Returns null when the memory cannot be had, for callers that report it themselves.
KOVO_HOST_API void* vmTryAlloc(VMEngine* vm, size_t size);
// Grows or shrinks a block; bytes added at the end are zero. Null on failure,
// leaving the old block intact.
KOVO_HOST_API void* vmTryRealloc(VMEngine* vm, void* block, size_t size);
KOVO_HOST_API void* vmRealloc(VMEngine* vm, void* block, size_t size);
// As vmTryRealloc, but the bytes added are left as they are: for a caller that
// writes them before anything reads them.
KOVO_HOST_API void* vmTryReallocUnfilled(VMEngine* vm, void* block, size_t size);
KOVO_HOST_API void vmFree(VMEngine* vm, void* block);

// ---- Family 1: putting values into items ----------------------------------
KOVO_HOST_API Item* itemPutC(VMEngine* vm, Item* dst, const char* text);
KOVO_HOST_API Item* itemPutCL(VMEngine* vm, Item* dst, const char* text, uint32_t length);
// Adopts `buffer` (from vmAlloc, with a zero byte after its last character).
KOVO_HOST_API Item* itemPutCPtr(VMEngine* vm, Item* dst, char* buffer, uint32_t length);
KOVO_HOST_API Item* itemPutCRaw(VMEngine* vm, Item* dst, char* buffer, uint32_t length);
// Refers to constant text without copying it.
KOVO_HOST_API Item* itemPutCStatic(VMEngine* vm, Item* dst, const char* text);
KOVO_HOST_API Item* itemPutCRawStatic(VMEngine* vm, Item* dst, const char* text, uint32_t length);
KOVO_HOST_API Item* itemPutCLM(VMEngine* vm, Item* dst, const char* text, uint32_t length,
                               int memo);
KOVO_HOST_API Item* itemPutNI(VMEngine* vm, Item* dst, int32_t value);
KOVO_HOST_API Item* itemPutNL(VMEngine* vm, Item* dst, int32_t value);
// A double with the default width and the decimals of the SET DECIMALS setting.
KOVO_HOST_API Item* itemPutND(VMEngine* vm, Item* dst, double value);
KOVO_HOST_API Item* itemPutNDLen(VMEngine* vm, Item* dst, double value, int width, int decimals);
KOVO_HOST_API Item* itemPutNLen(VMEngine* vm, Item* dst, double value, int width, int decimals);
// An integer item when the value fits 32 bits, else a double without decimals.
KOVO_HOST_API Item* itemPutNInt(VMEngine* vm, Item* dst, int64_t value);
KOVO_HOST_API Item* itemPutNIntLen(VMEngine* vm, Item* dst, int64_t value, int width);
KOVO_HOST_API Item* itemPutL(VMEngine* vm, Item* dst, bool value);
// "YYYYMMDD"; 8 blanks (or anything that is no date) give the empty date.
KOVO_HOST_API Item* itemPutDS(VMEngine* vm, Item* dst, const char* yyyymmdd);
KOVO_HOST_API Item* itemPutDL(VMEngine* vm, Item* dst, int32_t julian);
KOVO_HOST_API Item* itemPutD(VMEngine* vm, Item* dst, int year, int month, int day);
KOVO_HOST_API Item* itemPutPtr(VMEngine* vm, Item* dst, void* pointer);
KOVO_HOST_API Item* itemPutCounter(VMEngine* vm, Item* dst, uint32_t value);
KOVO_HOST_API void itemClear(VMEngine* vm, Item* item);
// Copies the value; strings, arrays, hashes and blocks are shared, not duplicated.
KOVO_HOST_API void itemCopy(VMEngine* vm, Item* dst, const Item* src);
// Moves the value, leaving src nil.
KOVO_HOST_API void itemForwardValue(VMEngine* vm, Item* dst, Item* src);
KOVO_HOST_API void itemReturn(VMEngine* vm, const Item* item);
KOVO_HOST_API void itemReturnCopy(VMEngine* vm, const Item* item);

// ---- Family 2: reading items ------------------------------------------------
// Follows references (and indirect elements) to the item finally referred to.
KOVO_HOST_API Item* itemUnRef(VMEngine* vm, Item* item);
KOVO_HOST_API Item* itemUnRefOnce(VMEngine* vm, Item* item);
KOVO_HOST_API int32_t itemGetNI(const Item* item);
KOVO_HOST_API int32_t itemGetNL(const Item* item);
KOVO_HOST_API double itemGetND(const Item* item);
KOVO_HOST_API bool itemGetL(const Item* item);
KOVO_HOST_API void itemGetNLen(const Item* item, int* width, int* decimals);
// The item's own text, "" when it is no string.
KOVO_HOST_API const char* itemGetC(VMEngine* vm, const Item* item);
// The text of a string item made safe to change in place: a buffer shared with
// other items, or constant text, is first copied. Null when it is no string.
KOVO_HOST_API char* itemGetWriteCL(VMEngine* vm, Item* item, uint32_t* length);
// Display text of any item; *mustFree tells whether it was allocated.
KOVO_HOST_API char* itemString(VMEngine* vm, const Item* item, uint32_t* length, bool* mustFree);
KOVO_HOST_API void itemReleaseString(char* text, bool mustFree);
// STR text of a number with optional width and decimals items; a heap text the
// caller frees, or null when `number` is not numeric.
KOVO_HOST_API char* itemStr(VMEngine* vm, const Item* number, const Item* width,
                            const Item* decimals);
// Text that the pad functions use: strings as they are, numbers without their
// leading blanks, dates in the SET DATEFORMAT form, logicals "T" or "F"; null
// for the other types.
KOVO_HOST_API char* itemPadConv(VMEngine* vm, const Item* item, uint32_t* length, bool* mustFree);
// One-letter type name: U N C M D L A O H B P S; "U" for no item.
KOVO_HOST_API const char* itemTypeStr(const Item* item);
// New items, released with xItemRelease.
KOVO_HOST_API Item* itemNew(VMEngine* vm, const Item* src);
KOVO_HOST_API Item* itemParam(VMEngine* vm, int n);
KOVO_HOST_API void xItemRelease(VMEngine* vm, Item* item);

// Variables that references can point to (block locals of an embedder's language).
KOVO_HOST_API ValueCell* cellNew(VMEngine* vm, const Item* value);
// Lets go of one holder of the cell; the last one frees it. Needs no context.
KOVO_HOST_API void cellRelease(ValueCell* cell);
// A reference to the cell (which gains a holder).
KOVO_HOST_API Item* itemPutRef(VMEngine* vm, Item* dst, ValueCell* cell);

// ---- Family 3: by-reference stores -------------------------------------------
// Store into the variable that parameter n refers to; nothing happens when
// parameter n is not a reference.
KOVO_HOST_API bool hb_storc(VMEngine* vm, const char* text, int n);
KOVO_HOST_API bool hb_storclen(VMEngine* vm, const char* text, uint32_t length, int n);
KOVO_HOST_API bool hb_storclenAdopt(VMEngine* vm, char* buffer, uint32_t length, int n);
KOVO_HOST_API bool hb_stornl(VMEngine* vm, int32_t value, int n);
KOVO_HOST_API bool hb_storl(VMEngine* vm, bool value, int n);
