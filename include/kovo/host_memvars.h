// Memory variables: public and private variables visible by name.
#pragma once

#include <regex.h>

#include <cstdint>

#include "kovo/export.h"
#include "kovo/host_calls.h"
#include "kovo/host_files.h"
#include "kovo/item.h"
#include "kovo/vmengine.h"

// Scopes of creation.
enum MemvarScope : int32_t {
  MV_UNKNOWN = 0,
  MV_PRIVATE = 64,
  MV_PUBLIC = 128,
};

// Where a variable stands as the debugger sees it, the numbers that programs
// compare __MVSCOPE against; the private ones are bits, 6 taking either.
enum MemvarDebugScope : int32_t {
  MV_DBG_NO_SYMBOL = -2,
  MV_DBG_NO_VARIABLE = -1,
  MV_DBG_UNKNOWN = 0,
  MV_DBG_PUBLIC = 1,
  MV_DBG_PRIVATE_CALLER = 2,  // created by a caller of the running procedure
  MV_DBG_PRIVATE_OWN = 4,     // created by the running procedure
  MV_DBG_PRIVATE = 6,
};

// The symbol of a visible memory variable of that name, or null.
KOVO_HOST_API DynSymbol* memvarFindSymbol(VMEngine* vm, const char* name);
// Copies the variable's value into dst; false when the symbol holds no variable.
KOVO_HOST_API bool memvarGetValue(VMEngine* vm, Item* dst, DynSymbol* symbol);
// The variable's own storage, or null when the symbol holds no variable.
KOVO_HOST_API ValueCell* memvarGetCell(VMEngine* vm, DynSymbol* symbol);
KOVO_HOST_API bool memvarSetValue(VMEngine* vm, DynSymbol* symbol, const Item* value);
// `name` is a string or symbol item; `value` may be null for nil. A private
// variable hides a variable of the same name until it is released.
KOVO_HOST_API void memvarCreateFromItem(VMEngine* vm, const Item* name, int32_t scope,
                                        const Item* value);
KOVO_HOST_API void memvarCreateFromDynSymbol(VMEngine* vm, DynSymbol* symbol, int32_t scope,
                                             const Item* value);
// The debugger's scope of the visible variable of that name.
KOVO_HOST_API int32_t memvarScope(VMEngine* vm, const char* name);
// Sets the variable to nil; it stays visible.
KOVO_HOST_API void memvarRelease(VMEngine* vm, const Item* name);
// Sets every private variable of the running procedure whose name the
// expression matches (or, with include false, does not match) to nil.
KOVO_HOST_API void memvarReleaseWithMask(VMEngine* vm, const regex_t* expression, bool include);
// Removes the variable of the symbol altogether, hidden ones included.
KOVO_HOST_API void memvarClear(VMEngine* vm, DynSymbol* symbol);
// The number of variables of a debugger scope (MV_DBG_PUBLIC or private bits).
KOVO_HOST_API int32_t memvarCount(VMEngine* vm, int32_t scope);
// The value of the pos-th (1-based, in creation order) variable of a debugger
// scope, its name through *name; null (and a null name) out of range. Hidden
// privates are counted too.
KOVO_HOST_API Item* memvarDebugVariable(VMEngine* vm, int32_t scope, int32_t pos,
                                        const char** name);
// ---- Memory-variable files (".mem") --------------------------------------------
// A record: a header of 32 bytes (the name in the first 11, NUL-terminated;
// the type letter plus 128 at 11; the length or width at 16 and 17), then the
// value's bytes.
inline constexpr uint32_t MEMVAR_HEADER_SIZE = 32;

// What memvarSave writes with: the filter and where the records go.
struct MemvarSaveContext {
  const char* mask;  // a mask that begins with "*" takes every name
  bool include;      // false: the names the filter does not take
  const regex_t* expression;
  uint8_t* buffer;  // MEMVAR_HEADER_SIZE bytes
  FHANDLE handle;
};
// An xdynsymEval callback (`cargo` a MemvarSaveContext): writes the record of
// the symbol's visible variable when the filter takes its name and its value
// is text, a number, a date or a logical.
KOVO_HOST_API bool memvarSave(VMEngine* vm, DynSymbol* symbol, void* cargo);

// A procedure begins: the privates created from now on are its own. They are
// released when the mark is restored, as when the procedure returns. Marks are
// restored in the reverse order of their taking.
KOVO_HOST_API uint32_t memvarPrivateMark(VMEngine* vm);
KOVO_HOST_API void memvarPrivateRestore(VMEngine* vm, uint32_t mark);
