// The registry of Windows itself, through its ANSI calls.
#include "os/registry.h"

#include <windows.h>

namespace {

// Handles travel as 32-bit numbers; the predefined ones are sign-extended
// values, as the system's headers define them.
HKEY handleOf(uint32_t key) {
  return reinterpret_cast<HKEY>(static_cast<intptr_t>(static_cast<int32_t>(key)));
}

uint32_t numberOf(HKEY key) {
  return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(key));
}

}  // namespace

int32_t osRegOpenKey(VMEngine*, uint32_t key, const char* subKey, uint32_t access,
                     uint32_t* opened) {
  HKEY result = nullptr;
  LONG code = RegOpenKeyExA(handleOf(key), subKey, 0, access, &result);
  if (code == ERROR_SUCCESS) *opened = numberOf(result);
  return code;
}

int32_t osRegCreateKey(VMEngine*, uint32_t key, const char* subKey, uint32_t* opened) {
  HKEY result = nullptr;
  LONG code = RegCreateKeyA(handleOf(key), subKey, &result);
  if (code == ERROR_SUCCESS) *opened = numberOf(result);
  return code;
}

int32_t osRegCreateKeyEx(VMEngine*, uint32_t key, const char* subKey, const char* className,
                         uint32_t options, uint32_t access, const void* security, uint32_t* opened,
                         uint32_t* disposition) {
  HKEY result = nullptr;
  DWORD how = 0;
  // The record is passed as the caller gave it, whatever its bytes.
  auto* attributes = static_cast<SECURITY_ATTRIBUTES*>(const_cast<void*>(security));
  LONG code = RegCreateKeyExA(handleOf(key), subKey, 0, const_cast<char*>(className), options,
                              access, attributes, &result, &how);
  if (code == ERROR_SUCCESS) {
    *opened = numberOf(result);
    *disposition = how;
  }
  return code;
}

int32_t osRegQueryValue(VMEngine*, uint32_t key, const char* name, uint32_t* type,
                        unsigned char* data, uint32_t* size) {
  DWORD valueType = *type;
  DWORD valueSize = *size;
  LONG code = RegQueryValueExA(handleOf(key), name, nullptr, &valueType, data, &valueSize);
  *type = valueType;
  *size = valueSize;
  return code;
}

int32_t osRegSetValue(VMEngine*, uint32_t key, const char* name, uint32_t type,
                      const unsigned char* data, uint32_t size) {
  return RegSetValueExA(handleOf(key), name, 0, type, data, size);
}

int32_t osRegEnumKey(VMEngine*, uint32_t key, uint32_t index, char* name, uint32_t* nameLength,
                     char* className, uint32_t* classLength) {
  DWORD nameSize = *nameLength;
  DWORD classSize = classLength ? *classLength : 0;
  FILETIME written;
  LONG code = RegEnumKeyExA(handleOf(key), index, name, &nameSize, nullptr, className,
                            classLength ? &classSize : nullptr, &written);
  *nameLength = nameSize;
  if (classLength) *classLength = classSize;
  return code;
}

int32_t osRegEnumValue(VMEngine*, uint32_t key, uint32_t index, char* name, uint32_t* nameLength,
                       uint32_t* type, unsigned char* data, uint32_t* size) {
  DWORD nameSize = *nameLength;
  DWORD valueType = 0;
  DWORD valueSize = *size;
  LONG code =
      RegEnumValueA(handleOf(key), index, name, &nameSize, nullptr, &valueType, data, &valueSize);
  *nameLength = nameSize;
  *type = valueType;
  *size = valueSize;
  return code;
}

int32_t osRegDeleteKey(VMEngine*, uint32_t key, const char* subKey) {
  return RegDeleteKeyA(handleOf(key), subKey);
}

int32_t osRegDeleteValue(VMEngine*, uint32_t key, const char* name) {
  return RegDeleteValueA(handleOf(key), name);
}

int32_t osRegCloseKey(VMEngine*, uint32_t key) {
  return RegCloseKey(handleOf(key));
}

// The registry of Windows has no transactions for these calls: the work runs as it is.
int32_t osRegBatch(VMEngine* vm, int32_t (*work)(VMEngine* vm, void* cargo), void* cargo) {
  return work(vm, cargo);
}
