// Driver information and the connection and statement options.
#include "bridges/odbc_bridge.h"

namespace {

// The buffer that SQLGETINFO and the option readers fill.
constexpr SQLSMALLINT VALUE_BUFFER_SIZE = 512;

// Options whose value is an address the driver keeps and writes through (or
// reads) later, and descriptor handles. A program's number cannot be either,
// and a string's bytes are gone by then, so they never reach the driver.
bool takesAddress(SQLUSMALLINT option) {
  switch (option) {
    case SQL_ATTR_FETCH_BOOKMARK_PTR:
    case SQL_ATTR_PARAM_BIND_OFFSET_PTR:
    case SQL_ATTR_PARAM_OPERATION_PTR:
    case SQL_ATTR_PARAM_STATUS_PTR:
    case SQL_ATTR_PARAMS_PROCESSED_PTR:
    case SQL_ATTR_ROW_BIND_OFFSET_PTR:
    case SQL_ATTR_ROW_OPERATION_PTR:
    case SQL_ATTR_ROW_STATUS_PTR:
    case SQL_ATTR_ROWS_FETCHED_PTR:
    case SQL_ATTR_APP_ROW_DESC:
    case SQL_ATTR_APP_PARAM_DESC:
    case SQL_ATTR_IMP_ROW_DESC:
    case SQL_ATTR_IMP_PARAM_DESC:
    case SQL_ATTR_ENLIST_IN_DTC:
    case SQL_ATTR_QUIET_MODE:
      return true;
    default:
      return false;
  }
}

// Parameter 3 as an option value: a string as its text, a number as itself
// (zero-extended, the 32-bit value programs mean).
SQLULEN optionValue(VMEngine* vm) {
  if (paramIsString(vm, 3)) return reinterpret_cast<SQLULEN>(paramXPChar(vm, 3));
  return static_cast<uint32_t>(paramGetNL(vm, 3));
}

template <auto Set>
void setOption(VMEngine* vm, OdbcKind kind) {
  const OdbcApi* api = odbcApi(vm);
  SQLHANDLE handle = odbcParamHandle(vm, 1, kind);
  auto option = static_cast<SQLUSMALLINT>(paramGetNL(vm, 2));
  SQLULEN value = optionValue(vm);
  odbcReturnLong(vm, odbcCall(api, handle, [&](const OdbcApi& dm, SQLHANDLE live) {
                   return takesAddress(option) ? SQL_ERROR : (dm.*Set)(live, option, value);
                 }));
}

// Only a plain success stores, and then all of the buffer: a numeric
// option's value is in its first bytes.
template <auto Get>
void getOption(VMEngine* vm, OdbcKind kind) {
  const OdbcApi* api = odbcApi(vm);
  SQLHANDLE handle = odbcParamHandle(vm, 1, kind);
  auto option = static_cast<SQLUSMALLINT>(paramGetNL(vm, 2));
  char value[VALUE_BUFFER_SIZE + 1] = {};
  SQLRETURN code = odbcCall(api, handle, [&](const OdbcApi& dm, SQLHANDLE live) {
    return (dm.*Get)(live, option, value);
  });
  odbcReturnUnsigned16(vm, code);
  if (code == SQL_SUCCESS) hb_storclen(vm, value, VALUE_BUFFER_SIZE, 3);
}

}  // namespace

KOVO_FUNC(SQLGETINFO) {
  const OdbcApi* api = odbcApi(vm);
  SQLHDBC dbc = odbcParamHandle(vm, 1, OdbcKind::connection);
  auto type = static_cast<SQLUSMALLINT>(paramGetNL(vm, 2));
  char value[VALUE_BUFFER_SIZE + 1] = {};
  SQLSMALLINT length = 0;
  odbcReturnUnsigned16(vm, odbcCall(api, dbc, [&](const OdbcApi& dm, SQLHDBC handle) {
                         return dm.getInfo(handle, type, value, VALUE_BUFFER_SIZE, &length);
                       }));
  hb_storclen(vm, value, std::clamp<SQLSMALLINT>(length, 0, VALUE_BUFFER_SIZE), 3);
}

KOVO_FUNC(SQLSETCONNECTOPTION) {
  setOption<&OdbcApi::setConnectOption>(vm, OdbcKind::connection);
}

KOVO_FUNC(SQLSETSTMTOPTION) {
  setOption<&OdbcApi::setStmtOption>(vm, OdbcKind::statement);
}

KOVO_FUNC(SQLGETCONNECTOPTION) {
  getOption<&OdbcApi::getConnectOption>(vm, OdbcKind::connection);
}

KOVO_FUNC(SQLGETSTMTOPTION) {
  getOption<&OdbcApi::getStmtOption>(vm, OdbcKind::statement);
}
