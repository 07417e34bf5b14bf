// Statements: allocating and freeing them, running SQL, fetching rows, and
// describing the result's columns.
#include "bridges/odbc_bridge.h"

namespace {

// Status entries kept in the object; a larger rowset takes them from the heap.
constexpr SQLULEN STATUS_ENTRIES_INLINE = 1;

// The statements' rowset size, as either name of it says: SQLExtendedFetch
// writes one status for every row of the rowset.
SQLULEN rowsetSize(const OdbcApi& dm, SQLHSTMT stmt) {
  SQLULEN size = 0, arraySize = 0;
  dm.getStmtOption(stmt, SQL_ROWSET_SIZE, &size);
  dm.getStmtOption(stmt, SQL_ATTR_ROW_ARRAY_SIZE, &arraySize);
  return std::max({size, arraySize, STATUS_ENTRIES_INLINE});
}

// A count of the statement's result into parameter 2, whatever the code.
template <auto Count, class Number>
SQLRETURN countInto(VMEngine* vm) {
  const OdbcApi* api = odbcApi(vm);
  SQLHSTMT stmt = odbcParamHandle(vm, 1, OdbcKind::statement);
  Number count = 0;
  SQLRETURN code = odbcCall(
      api, stmt, [&](const OdbcApi& dm, SQLHSTMT handle) { return (dm.*Count)(handle, &count); });
  hb_stornl(vm, static_cast<int32_t>(count), 2);
  return code;
}

}  // namespace

KOVO_FUNC(SQLALLOCST) {
  odbcAllocateUnder<&OdbcApi::allocStmt>(vm, OdbcKind::connection, OdbcKind::statement);
}

KOVO_FUNC(SQLFREESTM) {
  const OdbcApi* api = odbcApi(vm);
  int32_t number = paramGetNL(vm, 1);
  auto option = static_cast<SQLUSMALLINT>(paramGetNL(vm, 2));
  SQLRETURN code =
      odbcCall(api, odbcHandleFind(number, OdbcKind::statement),
               [&](const OdbcApi& dm, SQLHSTMT stmt) { return dm.freeStmt(stmt, option); });
  if (option == SQL_DROP && odbcSucceeded(code)) odbcHandleForget(number);
  odbcReturnInteger(vm, code);
}

KOVO_FUNC(SQLEXECDIR) {
  const OdbcApi* api = odbcApi(vm);
  SQLHSTMT stmt = odbcParamHandle(vm, 1, OdbcKind::statement);
  auto sql = odbcParamText<SQLINTEGER>(vm, 2);
  odbcReturnInteger(vm, odbcCall(api, stmt, [&](const OdbcApi& dm, SQLHSTMT handle) {
                      return dm.execDirect(handle, sql.text, sql.length);
                    }));
}

KOVO_FUNC(SQLFETCH) {
  const OdbcApi* api = odbcApi(vm);
  SQLHSTMT stmt = odbcParamHandle(vm, 1, OdbcKind::statement);
  odbcReturnInteger(
      vm, odbcCall(api, stmt, [](const OdbcApi& dm, SQLHSTMT handle) { return dm.fetch(handle); }));
}

KOVO_FUNC(SQLFETCHSC) {
  const OdbcApi* api = odbcApi(vm);
  SQLHSTMT stmt = odbcParamHandle(vm, 1, OdbcKind::statement);
  auto orientation = static_cast<SQLSMALLINT>(paramGetNL(vm, 2));
  SQLLEN offset = paramGetNL(vm, 3);
  odbcReturnInteger(vm, odbcCall(api, stmt, [&](const OdbcApi& dm, SQLHSTMT handle) {
                      return dm.fetchScroll(handle, orientation, offset);
                    }));
}

KOVO_FUNC(SQLEXTENDE) {
  const OdbcApi* api = odbcApi(vm);
  SQLHSTMT stmt = odbcParamHandle(vm, 1, OdbcKind::statement);
  auto fetchType = static_cast<SQLUSMALLINT>(paramGetNL(vm, 2));
  SQLLEN row = paramGetNL(vm, 3);
  SQLULEN rowCount = 0;
  OdbcBuffer statuses(vm);
  SQLRETURN code = odbcCall(api, stmt, [&](const OdbcApi& dm, SQLHSTMT handle) -> SQLRETURN {
    SQLULEN entries = rowsetSize(dm, handle);
    if (entries > SIZE_MAX / sizeof(SQLUSMALLINT)) return SQL_ERROR;
    if (!statuses.reserve(entries * sizeof(SQLUSMALLINT))) return SQL_ERROR;
    return dm.extendedFetch(handle, fetchType, row, &rowCount,
                            reinterpret_cast<SQLUSMALLINT*>(statuses.data()));
  });
  odbcReturnUnsigned16(vm, code);
  if (odbcSucceeded(code)) {
    SQLUSMALLINT status;
    std::memcpy(&status, statuses.data(), sizeof status);
    hb_stornl(vm, static_cast<int32_t>(rowCount), 4);
    hb_stornl(vm, status, 5);
  }
}

KOVO_FUNC(SQLNUMRES) {
  odbcReturnInteger(vm, countInto<&OdbcApi::numResultCols, SQLSMALLINT>(vm));
}

KOVO_FUNC(SQLROWCOUN) {
  odbcReturnUnsigned16(vm, countInto<&OdbcApi::rowCount, SQLLEN>(vm));
}

KOVO_FUNC(SQLDESCRIB) {
  const OdbcApi* api = odbcApi(vm);
  SQLHSTMT stmt = odbcParamHandle(vm, 1, OdbcKind::statement);
  auto column = static_cast<SQLUSMALLINT>(paramGetNL(vm, 2));
  SQLSMALLINT nameSize = odbcParamBufferSize(vm, 4);
  size_t nameRoom = static_cast<size_t>(std::max<SQLSMALLINT>(nameSize, 0));
  OdbcBuffer name(vm);
  SQLSMALLINT nameLength = 0, sqlType = 0, decimals = 0, nullable = 0;
  SQLULEN columnSize = 0;
  SQLRETURN code = odbcCall(api, stmt, [&](const OdbcApi& dm, SQLHSTMT handle) -> SQLRETURN {
    if (!name.reserve(nameRoom + 1)) return SQL_ERROR;
    return dm.describeCol(handle, column, reinterpret_cast<SQLCHAR*>(name.data()), nameSize,
                          &nameLength, &sqlType, &columnSize, &decimals, &nullable);
  });
  odbcReturnUnsigned16(vm, code);
  // The returned length is the whole name's, which a short buffer cut.
  uint32_t stored = name.data() ? odbcTextLength(name.data(), nameRoom) : 0;
  stored = std::min<uint32_t>(stored, static_cast<uint32_t>(std::max<SQLSMALLINT>(nameLength, 0)));
  hb_storclen(vm, name.data() ? name.data() : "", stored, 3);
  hb_stornl(vm, nameLength, 5);
  hb_stornl(vm, sqlType, 6);
  hb_stornl(vm, static_cast<int32_t>(columnSize), 7);
  hb_stornl(vm, decimals, 8);
  hb_stornl(vm, nullable, 9);
}

KOVO_FUNC(SQLCOLATTRIBUTE) {
  const OdbcApi* api = odbcApi(vm);
  SQLHSTMT stmt = odbcParamHandle(vm, 1, OdbcKind::statement);
  auto column = static_cast<SQLUSMALLINT>(paramGetNL(vm, 2));
  auto field = static_cast<SQLUSMALLINT>(paramGetNL(vm, 3));
  SQLSMALLINT textSize = odbcParamBufferSize(vm, 5);
  size_t textRoom = static_cast<size_t>(std::max<SQLSMALLINT>(textSize, 0));
  OdbcBuffer text(vm);
  SQLSMALLINT textLength = 0;
  SQLLEN number = 0;
  SQLRETURN code = odbcCall(api, stmt, [&](const OdbcApi& dm, SQLHSTMT handle) -> SQLRETURN {
    if (!text.reserve(textRoom + 1)) return SQL_ERROR;
    return dm.colAttribute(handle, column, field, text.data(), textSize, &textLength, &number);
  });
  odbcReturnUnsigned16(vm, code);
  if (odbcSucceeded(code)) {
    hb_storclen(vm, text.data(), odbcTextLength(text.data(), textRoom), 4);
    hb_stornl(vm, textLength, 6);
    hb_stornl(vm, static_cast<int32_t>(number), 7);
  }
}
