// How a VM function of the library meets the host: its export, the call
// frame, the parameter readers and the argument-error raisers.
//
// A VM function is written as
//
//   KOVO_FUNC(LEN) {
//     ...read parameters, check types, compute, put one result...
//   }
//
// and a second exported name for it as KOVO_ALIAS(TRIM, RTRIM). Nothing else
// has to be registered anywhere.
#pragma once

#include <cstdint>

#include "kovo/export.h"
#include "kovo/host.h"

#define KOVO_FUNC(NAME) extern "C" KOVO_EXPORT void NAME(VMEngine* vm)
#define KOVO_ALIAS(NAME, TARGET) \
  extern "C" KOVO_EXPORT void NAME(VMEngine*) __attribute__((alias(#TARGET)))
// For an exported name that C++ cannot spell as an identifier (a macro of the
// standard headers such as INFINITY): the function is `IDENT` in the source.
#define KOVO_FUNC_AS(IDENT, NAME)                                              \
  extern "C" KOVO_EXPORT_RENAMED void IDENT(VMEngine* vm) KOVO_ASM_NAME(NAME); \
  extern "C" KOVO_EXPORT_RENAMED void IDENT(VMEngine* vm)

// ---- The call frame ------------------------------------------------------------
inline int paramCount(const VMEngine* vm) {
  return vmParamCount(vm);
}
// Parameter n as passed (a reference stays a reference); null when absent.
inline Item* paramSlot(VMEngine* vm, int n) {
  return vmParamSlot(vm, n);
}
// An item with references followed; most parameters are no reference at all.
inline Item* resolveItem(VMEngine* vm, Item* item) {
  if (!item || !(item->type & (HB_IT_BYREF | HB_IT_ELEMREF))) return item;
  return itemUnRef(vm, item);
}
// Parameter n with references followed; null when absent.
inline Item* paramResolved(VMEngine* vm, int n) {
  return resolveItem(vm, vmParamSlot(vm, n));
}
inline bool paramIsByRef(VMEngine* vm, int n) {
  Item* slot = vmParamSlot(vm, n);
  return n >= 1 && slot && (slot->type & HB_IT_BYREF);
}
inline bool paramIsString(VMEngine* vm, int n) {
  return itemIsString(paramResolved(vm, n));
}
inline bool paramIsNumCompat(VMEngine* vm, int n) {
  return itemIsNumCompat(paramResolved(vm, n));
}
inline bool paramIsLogical(VMEngine* vm, int n) {
  Item* item = paramResolved(vm, n);
  return item && item->type == HB_IT_LOGICAL;
}
// Whether parameter n is logical true.
inline bool paramIsTrue(VMEngine* vm, int n) {
  return paramIsLogical(vm, n) && paramResolved(vm, n)->item.asLogical.value != 0;
}
inline Item* returnItem(VMEngine* vm) {
  return &vm->stack.Return;
}

// ---- Parameter readers ----------------------------------------------------------
// n = -1 is the return item; a missing parameter gives the reader's default;
// an array where a scalar is wanted throws the reader's message text.
int32_t paramGetNI(VMEngine* vm, int n);
int32_t paramGetNL(VMEngine* vm, int n);
double paramGetND(VMEngine* vm, int n);
int32_t param(VMEngine* vm, int n);
const char* paramPChar(VMEngine* vm, int n);
const char* paramXPChar(VMEngine* vm, int n);
uint32_t paramGetCLen(VMEngine* vm, int n);
const char* paramGetDS(VMEngine* vm, int n);
// Parameter n's item when its type shares a bit with the mask. 0xFFFF: any
// item; HB_IT_BYREF: the referred item of a reference parameter only;
// HB_IT_NUMCOMPAT: a numeric-compatible item. Inline: nearly every function
// asks it for its parameters.
inline Item* paramItem(VMEngine* vm, int n, HB_TYPE mask) {
  Item* slot = paramSlot(vm, n);
  if (!slot) return nullptr;
  if (mask == HB_IT_BYREF) return (slot->type & HB_IT_BYREF) ? itemUnRef(vm, slot) : nullptr;
  Item* item = resolveItem(vm, slot);
  if (mask == HB_IT_ANY) return item;
  if (mask == HB_IT_NUMCOMPAT) return itemIsNumCompat(item) ? item : nullptr;
  return (item->type & mask) ? item : nullptr;
}
// Parameter n's item, or the context's spare nil item when there is none.
Item* paramError(VMEngine* vm, int n);
// Parameter n read with paramGetNL when it is numeric-compatible, else `fallback`.
inline int64_t paramNumberOr(VMEngine* vm, int n, int64_t fallback) {
  return paramIsNumCompat(vm, n) ? paramGetNL(vm, n) : fallback;
}

// The empty text as the result.
inline void returnEmptyText(VMEngine* vm) {
  itemPutCL(vm, returnItem(vm), "", 0);
}

// ---- Argument errors of the standard functions ---------------------------------
// Raised with general code 1, listing the `declared` parameters as passed; the
// handler's substitute becomes the result.
void argError(VMEngine* vm, int32_t subCode, const char* operation, int declared);
// The same with another general code.
void argErrorGen(VMEngine* vm, int32_t genCode, int32_t subCode, const char* operation,
                 int declared);
// Raised without substitution; the result stays as it is.
void argErrorNoSubst(VMEngine* vm, int32_t subCode, const char* operation, int declared);

// ---- Argument errors of the text tools ------------------------------------------
uint32_t ctRaiseError(VMEngine* vm, int32_t severity, int32_t genCode, int32_t subCode,
                      const char* description, const char* operation, int32_t osCode,
                      uint32_t flags, uint32_t argc, ...);
Item* ctRaiseErrorSubst(VMEngine* vm, int32_t severity, int32_t genCode, int32_t subCode,
                        const char* description, const char* operation, int32_t osCode,
                        uint32_t flags, uint32_t argc, ...);
// The thread's text-tools argument-error mode: -1 ignore ... 3 catastrophic.
int32_t ctArgErrorMode(VMEngine* vm);
void ctSetArgErrorMode(VMEngine* vm, int32_t mode);
// A substitution-allowed text-tools argument error listing `declared`
// parameters. Returns true when the handler substituted a value, which is
// then already the result; false (nothing raised in mode -1) leaves the
// caller to put its fallback.
bool ctArgErrorSubst(VMEngine* vm, int32_t subCode, const char* operation, int declared);
// A default-allowed text-tools argument error; the caller goes on to its fallback.
void ctArgErrorDefault(VMEngine* vm, int32_t subCode, const char* operation, int declared);
// The same with another general code (a memory error, for instance).
void ctErrorDefaultGen(VMEngine* vm, int32_t genCode, int32_t subCode, const char* operation,
                       int declared);

// The library's module handle, stored when it was loaded.
void* libraryModule();
