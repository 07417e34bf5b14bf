// The registry as the ANSI registry calls of Windows offer it: keys named by
// 32-bit numbers (the predefined roots or handles from an open or create),
// values of a type and bytes. Every operation returns Win32's code (0 for
// success). Windows passes them to its registry; Linux keeps a transactional
// store of its own that behaves the same.
#pragma once

#include <cstdint>

struct VMEngine;

// Win32's codes, as programs compare them.
inline constexpr int32_t REG_OK = 0;
inline constexpr int32_t REG_ERROR_FILE_NOT_FOUND = 2;
inline constexpr int32_t REG_ERROR_ACCESS_DENIED = 5;
inline constexpr int32_t REG_ERROR_INVALID_HANDLE = 6;
inline constexpr int32_t REG_ERROR_INVALID_PARAMETER = 87;
inline constexpr int32_t REG_ERROR_BAD_PATHNAME = 161;
inline constexpr int32_t REG_ERROR_MORE_DATA = 234;
inline constexpr int32_t REG_ERROR_NO_MORE_ITEMS = 259;
inline constexpr int32_t REG_ERROR_BADDB = 1009;
inline constexpr int32_t REG_ERROR_KEY_DELETED = 1018;

// The predefined root keys.
inline constexpr uint32_t HKEY_CLASSES_ROOT_KEY = 0x80000000u;
inline constexpr uint32_t HKEY_CURRENT_USER_KEY = 0x80000001u;
inline constexpr uint32_t HKEY_LOCAL_MACHINE_KEY = 0x80000002u;
inline constexpr uint32_t HKEY_USERS_KEY = 0x80000003u;
inline constexpr uint32_t HKEY_CURRENT_CONFIG_KEY = 0x80000005u;

// Access rights that the store checks.
inline constexpr uint32_t REG_KEY_QUERY_VALUE = 0x0001;
inline constexpr uint32_t REG_KEY_SET_VALUE = 0x0002;
inline constexpr uint32_t REG_KEY_CREATE_SUB_KEY = 0x0004;
inline constexpr uint32_t REG_KEY_ENUMERATE_SUB_KEYS = 0x0008;
inline constexpr uint32_t REG_KEY_ALL_ACCESS = 0xF003F;

// Value types that have a meaning of their own (any other number is kept too).
inline constexpr uint32_t REG_TYPE_SZ = 1;
inline constexpr uint32_t REG_TYPE_EXPAND_SZ = 2;
inline constexpr uint32_t REG_TYPE_BINARY = 3;
inline constexpr uint32_t REG_TYPE_DWORD = 4;
inline constexpr uint32_t REG_TYPE_MULTI_SZ = 7;
inline constexpr uint32_t REG_TYPE_QWORD = 11;

// Names are zero-terminated ANSI (CP1251) texts; `\` separates the levels of a sub-key name.
int32_t osRegOpenKey(VMEngine* vm, uint32_t key, const char* subKey, uint32_t access,
                     uint32_t* opened);
int32_t osRegCreateKey(VMEngine* vm, uint32_t key, const char* subKey, uint32_t* opened);
// `security` is handed to Windows as the security-attributes record as it is.
int32_t osRegCreateKeyEx(VMEngine* vm, uint32_t key, const char* subKey, const char* className,
                         uint32_t options, uint32_t access, const void* security, uint32_t* opened,
                         uint32_t* disposition);
// With no `data`, reports type and size only; with a buffer of *size bytes
// that is too small, fails with REG_ERROR_MORE_DATA and reports the size needed.
int32_t osRegQueryValue(VMEngine* vm, uint32_t key, const char* name, uint32_t* type,
                        unsigned char* data, uint32_t* size);
int32_t osRegSetValue(VMEngine* vm, uint32_t key, const char* name, uint32_t type,
                      const unsigned char* data, uint32_t size);
// Sub-key `index` in the order of the upper-cased names. The lengths come in
// as buffer sizes (zero included) and go out as text lengths (zero excluded).
int32_t osRegEnumKey(VMEngine* vm, uint32_t key, uint32_t index, char* name, uint32_t* nameLength,
                     char* className, uint32_t* classLength);
// Value `index` in the order of the upper-cased names; sizes as above, the
// data's in bytes.
int32_t osRegEnumValue(VMEngine* vm, uint32_t key, uint32_t index, char* name, uint32_t* nameLength,
                       uint32_t* type, unsigned char* data, uint32_t* size);
int32_t osRegDeleteKey(VMEngine* vm, uint32_t key, const char* subKey);
int32_t osRegDeleteValue(VMEngine* vm, uint32_t key, const char* name);
int32_t osRegCloseKey(VMEngine* vm, uint32_t key);

// Runs `work`, whose registry writes land together or not at all where the
// platform can promise it (the store: one transaction, rolled back when
// `work` returns non-zero). Returns what `work` returned.
int32_t osRegBatch(VMEngine* vm, int32_t (*work)(VMEngine* vm, void* cargo), void* cargo);
