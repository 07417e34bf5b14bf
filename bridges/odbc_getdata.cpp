// SQLGETDATA: one column value of any length in at most two calls.
#include "bridges/odbc_bridge.h"

namespace {

// SQL_C_BINARY (-2) as programs pass it, in 16 bits.
constexpr int32_t DEFAULT_TARGET_TYPE = 65534;
constexpr SQLLEN DEFAULT_BUFFER_LENGTH = 64;
// Fixed-size targets (numbers, dates, GUIDs, intervals) are written whole
// whatever the buffer length says; none is larger than this.
constexpr size_t FIXED_TARGET_ROOM = 64;

// Stored lengths are cut to 16 bits, as programs have always received them.
uint32_t cutTo16Bits(SQLLEN length) {
  return static_cast<uint16_t>(length);
}

size_t bufferRoom(SQLLEN length) {
  return std::max(static_cast<size_t>(std::max<SQLLEN>(length, 0)), FIXED_TARGET_ROOM) + 1;
}

struct ValueRead {
  const OdbcApi& dm;
  SQLHSTMT stmt;
  SQLUSMALLINT column;
  SQLSMALLINT type;
  int32_t lengthParam;  // parameter 4 itself, 0 when absent
};

// The rest of a value that did not fit the first buffer of `length` bytes:
// one more call for everything that is left, then the whole value into
// parameter 5 and success, whatever the second call said.
SQLRETURN readRest(VMEngine* vm, const ValueRead& read, OdbcBuffer& buffer, SQLLEN length,
                   SQLLEN total) {
  if (total > static_cast<SQLLEN>(INT32_MAX)) return SQL_ERROR;
  // Room for the value, the part that goes over the end of binary data, and a zero.
  size_t outputSize = static_cast<size_t>(total) + 3;
  char* output = static_cast<char*>(vmTryAlloc(vm, outputSize));
  if (!output) return SQL_ERROR;
  std::memcpy(output, buffer.data(), static_cast<size_t>(length));
  SQLLEN restLength = total + 2 - length;
  SQLLEN restIndicator = 0;
  SQLRETURN code = SQL_ERROR;
  if (buffer.reserve(bufferRoom(restLength))) {
    code = read.dm.getData(read.stmt, read.column, read.type, buffer.data(), restLength,
                           &restIndicator);
  }
  if (!odbcSucceeded(code)) {
    vmFree(vm, output);
    return code;
  }
  // Appended after the text of the first part: character data ends in its
  // zero, binary data fills the part. The stored length counts the first part
  // as length - 1 either way, so binary data loses its last byte.
  SQLLEN appended = std::clamp<SQLLEN>(restIndicator, 0, restLength);
  size_t end = strnlen(output, static_cast<size_t>(length));
  std::memcpy(output + end, buffer.data(), static_cast<size_t>(appended));
  uint32_t stored = cutTo16Bits(appended + length - 1);
  output[stored] = '\0';
  hb_storclenAdopt(vm, output, stored, 5);
  return SQL_SUCCESS;
}

SQLRETURN readValue(VMEngine* vm, const ValueRead& read) {
  SQLLEN length = read.lengthParam ? read.lengthParam : DEFAULT_BUFFER_LENGTH;
  OdbcBuffer buffer(vm);
  if (!buffer.reserve(bufferRoom(length))) return SQL_ERROR;
  SQLLEN indicator = 0;
  SQLRETURN code =
      read.dm.getData(read.stmt, read.column, read.type, buffer.data(), length, &indicator);
  if (!odbcSucceeded(code)) return code;
  if (code == SQL_SUCCESS_WITH_INFO && indicator >= length && length > 0) {
    return readRest(vm, read, buffer, length, indicator);
  }
  // Parameter 4 as passed bounds the stored length, not the default: a call
  // without it stores an empty string for every value that fits at once.
  SQLLEN stored = indicator < 0 ? 0 : std::min<SQLLEN>(indicator, read.lengthParam);
  stored = std::min<SQLLEN>(cutTo16Bits(std::max<SQLLEN>(stored, 0)), std::max<SQLLEN>(length, 0));
  hb_storclen(vm, buffer.data(), static_cast<uint32_t>(stored), 5);
  return code;
}

}  // namespace

KOVO_FUNC(SQLGETDATA) {
  const OdbcApi* api = odbcApi(vm);
  SQLHSTMT stmt = odbcParamHandle(vm, 1, OdbcKind::statement);
  auto column = static_cast<SQLUSMALLINT>(paramGetNL(vm, 2));
  int32_t typeParam = paramGetNL(vm, 3);
  auto type = static_cast<SQLSMALLINT>(typeParam ? typeParam : DEFAULT_TARGET_TYPE);
  int32_t lengthParam = paramGetNL(vm, 4);
  odbcReturnUnsigned16(vm, odbcCall(api, stmt, [&](const OdbcApi& dm, SQLHSTMT handle) {
                         return readValue(vm, ValueRead{dm, handle, column, type, lengthParam});
                       }));
}
