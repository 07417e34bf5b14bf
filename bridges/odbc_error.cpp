// SQLERROR: the diagnostics of an environment, connection or statement.
#include "bridges/odbc_bridge.h"

namespace {
constexpr SQLSMALLINT MESSAGE_BUFFER_SIZE = 256;
constexpr size_t STATE_BUFFER_SIZE = 6;  // five characters and their zero
}  // namespace

KOVO_FUNC(SQLERROR) {
  const OdbcApi* api = odbcApi(vm);
  OdbcOptionalHandle env = odbcParamOptionalHandle(vm, 1, OdbcKind::environment);
  OdbcOptionalHandle dbc = odbcParamOptionalHandle(vm, 2, OdbcKind::connection);
  OdbcOptionalHandle stmt = odbcParamOptionalHandle(vm, 3, OdbcKind::statement);
  SQLCHAR state[STATE_BUFFER_SIZE] = {};
  SQLINTEGER native = 0;
  SQLCHAR message[MESSAGE_BUFFER_SIZE + 1] = {};
  SQLSMALLINT messageLength = 0;
  SQLRETURN code;
  if (!api) {
    code = SQL_ERROR;
  } else if (!env.valid || !dbc.valid || !stmt.valid ||
             (!env.handle && !dbc.handle && !stmt.handle)) {
    code = SQL_INVALID_HANDLE;
  } else {
    code = api->error(env.handle, dbc.handle, stmt.handle, state, &native, message,
                      MESSAGE_BUFFER_SIZE, &messageLength);
  }
  odbcReturnInteger(vm, code);
  const char* stateText = reinterpret_cast<const char*>(state);
  const char* messageText = reinterpret_cast<const char*>(message);
  hb_storclen(vm, stateText, odbcTextLength(stateText, STATE_BUFFER_SIZE - 1), 4);
  hb_stornl(vm, native, 5);
  hb_storclen(vm, messageText, odbcTextLength(messageText, MESSAGE_BUFFER_SIZE), 6);
}
