// What the ODBC functions share: reading handle numbers and texts, making a
// call only when the driver manager and the handle are there, and putting the
// return code in the width each function gives it.
#pragma once

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "bridges/odbc_api.h"
#include "frame/frame.h"

inline bool odbcSucceeded(SQLRETURN code) {
  return code == SQL_SUCCESS || code == SQL_SUCCESS_WITH_INFO;
}

// ---- Result widths ----------------------------------------------------------------
inline void odbcReturnInteger(VMEngine* vm, SQLRETURN code) {
  itemPutNI(vm, returnItem(vm), code);
}
// Widened as an unsigned 16-bit number: SQL_ERROR comes back as 65535.
inline void odbcReturnUnsigned16(VMEngine* vm, SQLRETURN code) {
  itemPutNI(vm, returnItem(vm), static_cast<uint16_t>(code));
}
inline void odbcReturnLong(VMEngine* vm, SQLRETURN code) {
  itemPutNL(vm, returnItem(vm), code);
}

// ---- Parameters -------------------------------------------------------------------
// Parameter n as a live handle of the kind; null when its number stands for none.
inline SQLHANDLE odbcParamHandle(VMEngine* vm, int n, OdbcKind kind) {
  return odbcHandleFind(paramGetNL(vm, n), kind);
}

// A handle parameter that may also be 0, the null handle.
struct OdbcOptionalHandle {
  SQLHANDLE handle;
  bool valid;  // 0, or the number of a live handle
};
inline OdbcOptionalHandle odbcParamOptionalHandle(VMEngine* vm, int n, OdbcKind kind) {
  int32_t number = paramGetNL(vm, n);
  if (number == 0) return {SQL_NULL_HANDLE, true};
  SQLHANDLE handle = odbcHandleFind(number, kind);
  return {handle, handle != nullptr};
}

// A text parameter with its length in the width of the call it goes to. A
// text too long for that width goes as zero-terminated, which item texts are.
template <class Length>
struct OdbcText {
  SQLCHAR* text;
  Length length;
};
template <class Length>
inline OdbcText<Length> odbcParamText(VMEngine* vm, int n) {
  const char* text = paramXPChar(vm, n);
  uint32_t length = paramGetCLen(vm, n);
  Length passed = length <= static_cast<uint32_t>(std::numeric_limits<Length>::max())
                      ? static_cast<Length>(length)
                      : static_cast<Length>(SQL_NTS);
  return {reinterpret_cast<SQLCHAR*>(const_cast<char*>(text)), passed};
}

// A buffer size parameter in the SQLSMALLINT width of the calls that take one.
inline SQLSMALLINT odbcParamBufferSize(VMEngine* vm, int n) {
  return static_cast<SQLSMALLINT>(std::clamp<int32_t>(paramGetNL(vm, n), SHRT_MIN, SHRT_MAX));
}

// ---- Calls ------------------------------------------------------------------------
// The code of a call on a handle: SQL_ERROR without a driver manager,
// SQL_INVALID_HANDLE without a live handle (the driver manager never sees an
// unknown number), else what the call returns.
template <class Call>
inline SQLRETURN odbcCall(const OdbcApi* api, SQLHANDLE handle, Call call) {
  if (!api) return SQL_ERROR;
  if (!handle) return SQL_INVALID_HANDLE;
  return call(*api, handle);
}

// A new handle's number into parameter n: 0 when the call made none.
inline void odbcStoreNewHandle(VMEngine* vm, SQLRETURN code, SQLHANDLE handle, OdbcKind kind,
                               int32_t owner, int n) {
  int32_t number = odbcSucceeded(code) && handle ? odbcHandleAdd(handle, kind, owner) : 0;
  hb_stornl(vm, number, n);
}

// Allocates a handle under the live one that parameter 1 numbers and stores
// the new handle's number into parameter 2, after the code is set.
template <auto Allocate>
inline void odbcAllocateUnder(VMEngine* vm, OdbcKind ownerKind, OdbcKind kind) {
  const OdbcApi* api = odbcApi(vm);
  int32_t owner = paramGetNL(vm, 1);
  SQLHANDLE made = SQL_NULL_HANDLE;
  SQLRETURN code =
      odbcCall(api, odbcHandleFind(owner, ownerKind),
               [&](const OdbcApi& dm, SQLHANDLE handle) { return (dm.*Allocate)(handle, &made); });
  odbcReturnInteger(vm, code);
  odbcStoreNewHandle(vm, code, made, kind, owner, 2);
}

// The length of the text a driver left in a buffer of `size` bytes, never
// more than the buffer holds.
inline uint32_t odbcTextLength(const char* buffer, size_t size) {
  return static_cast<uint32_t>(strnlen(buffer, size));
}

// A zero-filled working buffer: inside the object when it is small, from the
// context's heap otherwise.
class OdbcBuffer {
 public:
  explicit OdbcBuffer(VMEngine* vm) : vm_(vm) {}
  OdbcBuffer(const OdbcBuffer&) = delete;
  OdbcBuffer& operator=(const OdbcBuffer&) = delete;
  ~OdbcBuffer() { release(); }

  // Room for `size` zero bytes, the old contents dropped; false when the
  // memory cannot be had.
  bool reserve(size_t size) {
    release();
    if (size <= sizeof inline_) {
      std::memset(inline_, 0, size);
      data_ = inline_;
    } else {
      data_ = static_cast<char*>(vmTryAlloc(vm_, size));
    }
    return data_ != nullptr;
  }
  char* data() const { return data_; }

 private:
  void release() {
    if (data_ && data_ != inline_) vmFree(vm_, data_);
    data_ = nullptr;
  }

  static constexpr size_t INLINE_SIZE = 528;
  VMEngine* vm_;
  char* data_ = nullptr;
  char inline_[INLINE_SIZE];
};
