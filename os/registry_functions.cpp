// Registry functions: each wraps one registry call. Keys travel as numbers,
// outputs go back through parameters passed by reference, and the result is
// 0, -1 or the system's own code, function by function.
#include "frame/frame.h"
#include "kovo/numconv.h"
#include "os/registry.h"

namespace {

// REGENUMKEYEX reads names and classes into buffers of this size.
constexpr uint32_t ENUM_BUFFER = 255;

// A key number is taken by its low 32 bits: 2147483649 (a double in a
// program) and -2147483647 both name HKEY_CURRENT_USER.
uint32_t keyParam(VMEngine* vm, int n) {
  const Item* item = paramResolved(vm, n);
  if (item && item->type == HB_IT_DOUBLE) {
    return static_cast<uint32_t>(truncToInt64(item->item.asDouble.value));
  }
  return static_cast<uint32_t>(paramGetNL(vm, n));
}

void returnNumber(VMEngine* vm, int32_t value) {
  itemPutNL(vm, returnItem(vm), value);
}

// The functions that report any failure as -1.
void returnSuccessOrMinusOne(VMEngine* vm, int32_t code) {
  returnNumber(vm, code == REG_OK ? 0 : -1);
}

}  // namespace

KOVO_FUNC(REGCLOSEKEY) {
  returnSuccessOrMinusOne(vm, osRegCloseKey(vm, keyParam(vm, 1)));
}

KOVO_FUNC(REGOPENKEYEX) {
  uint32_t key = keyParam(vm, 1);
  const char* subKey = paramXPChar(vm, 2);
  auto access = static_cast<uint32_t>(paramGetNL(vm, 4));
  if (access == 0) access = REG_KEY_ALL_ACCESS;
  uint32_t opened = 0;
  int32_t code = osRegOpenKey(vm, key, subKey, access, &opened);
  if (code == REG_OK) hb_stornl(vm, static_cast<int32_t>(opened), 5);
  returnSuccessOrMinusOne(vm, code);
}

KOVO_FUNC(REGCREATEKEY) {
  uint32_t key = keyParam(vm, 1);
  const char* subKey = paramXPChar(vm, 2);
  uint32_t opened = 0;
  int32_t code = osRegCreateKey(vm, key, subKey, &opened);
  if (code == REG_OK) hb_stornl(vm, static_cast<int32_t>(opened), 3);
  returnNumber(vm, code);
}

KOVO_FUNC(REGCREATEKEYEX) {
  uint32_t key = keyParam(vm, 1);
  const char* subKey = paramXPChar(vm, 2);
  const char* className = paramXPChar(vm, 4);
  auto options = static_cast<uint32_t>(paramGetNL(vm, 5));
  auto access = static_cast<uint32_t>(paramGetNL(vm, 6));
  // The security record is only tested for being a string, never read as
  // text: anything else hands the system the context's address, as the
  // original did, and only a caller passing a string gets defined behaviour.
  const Item* security = paramResolved(vm, 7);
  const void* record = itemIsString(security) ? static_cast<const void*>(itemStrPtr(security))
                                              : static_cast<const void*>(vm);
  uint32_t opened = 0;
  uint32_t disposition = 0;
  int32_t code =
      osRegCreateKeyEx(vm, key, subKey, className, options, access, record, &opened, &disposition);
  if (code == REG_OK) {
    hb_stornl(vm, static_cast<int32_t>(opened), 8);
    hb_stornl(vm, static_cast<int32_t>(disposition), 9);
  }
  returnNumber(vm, code);
}

KOVO_FUNC(REGQUERYVALUEEX) {
  uint32_t key = keyParam(vm, 1);
  const char* name = paramXPChar(vm, 2);
  auto type = static_cast<uint32_t>(paramGetNL(vm, 4));
  uint32_t size = 0;
  // A failed size query leaves everything as it was, the result nil included.
  if (osRegQueryValue(vm, key, name, &type, nullptr, &size) != REG_OK) return;
  auto* data = static_cast<unsigned char*>(vmAlloc(vm, size + 1));
  int32_t code = osRegQueryValue(vm, key, name, &type, data, &size);
  if (code == REG_OK) {
    hb_stornl(vm, static_cast<int32_t>(type), 4);
    // Stored as a zero-terminated text: binary data ends at its first zero.
    hb_storc(vm, reinterpret_cast<const char*>(data), 5);
    hb_stornl(vm, static_cast<int32_t>(size), 6);
  }
  vmFree(vm, data);
  returnSuccessOrMinusOne(vm, code);
}

KOVO_FUNC(REGSETVALUEEX) {
  uint32_t key = keyParam(vm, 1);
  const char* name = paramXPChar(vm, 2);
  auto type = static_cast<uint32_t>(paramGetNL(vm, 4));
  const char* data = paramXPChar(vm, 5);
  auto size = static_cast<uint32_t>(paramGetNL(vm, 6));
  // The system reads as many bytes as the size says; here they stop at the
  // string's own closing zero, past which nothing may be read.
  uint32_t available = paramGetCLen(vm, 5) + 1;
  if (!paramIsString(vm, 5)) available = 1;
  if (size > available) size = available;
  returnNumber(
      vm, osRegSetValue(vm, key, name, type, reinterpret_cast<const unsigned char*>(data), size));
}

KOVO_FUNC(REGENUMKEYEX) {
  uint32_t key = keyParam(vm, 1);
  auto index = static_cast<uint32_t>(paramGetNL(vm, 2));
  char name[ENUM_BUFFER];
  char className[ENUM_BUFFER];
  uint32_t nameLength = ENUM_BUFFER;
  uint32_t classLength = ENUM_BUFFER;
  int32_t code = osRegEnumKey(vm, key, index, name, &nameLength, className, &classLength);
  // Here the system's code itself is the result, not -1.
  if (code != REG_OK) return returnNumber(vm, code);
  hb_storc(vm, name, 3);
  hb_stornl(vm, static_cast<int32_t>(nameLength), 4);
  hb_storc(vm, className, 6);
  hb_stornl(vm, static_cast<int32_t>(classLength), 7);
  returnNumber(vm, REG_OK);
}

KOVO_FUNC(REGDELETEKEY) {
  uint32_t key = keyParam(vm, 1);
  returnSuccessOrMinusOne(vm, osRegDeleteKey(vm, key, paramXPChar(vm, 2)));
}

KOVO_FUNC(REGDELETEVALUE) {
  uint32_t key = keyParam(vm, 1);
  returnSuccessOrMinusOne(vm, osRegDeleteValue(vm, key, paramXPChar(vm, 2)));
}
