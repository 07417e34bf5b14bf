// Environments and connections: allocating, connecting, disconnecting,
// freeing, and ending transactions.
#include "bridges/odbc_bridge.h"

namespace {

// The completed connection string that SQLDRIVERC hands back.
constexpr SQLSMALLINT COMPLETED_CONNECTION_SIZE = 1024;

void endTransaction(VMEngine* vm, SQLUSMALLINT completion) {
  const OdbcApi* api = odbcApi(vm);
  OdbcOptionalHandle env = odbcParamOptionalHandle(vm, 1, OdbcKind::environment);
  OdbcOptionalHandle dbc = odbcParamOptionalHandle(vm, 2, OdbcKind::connection);
  SQLRETURN code;
  if (!api) {
    code = SQL_ERROR;
  } else if (!env.valid || !dbc.valid || (!env.handle && !dbc.handle)) {
    code = SQL_INVALID_HANDLE;
  } else {
    code = api->transact(env.handle, dbc.handle, completion);
  }
  odbcReturnInteger(vm, code);
}

// Frees or disconnects the handle that parameter 1 numbers; when that
// succeeds, the numbers that went with it are forgotten.
template <auto Release>
void release(VMEngine* vm, OdbcKind kind, void (*forget)(int32_t)) {
  const OdbcApi* api = odbcApi(vm);
  int32_t number = paramGetNL(vm, 1);
  SQLRETURN code =
      odbcCall(api, odbcHandleFind(number, kind),
               [](const OdbcApi& dm, SQLHANDLE handle) { return (dm.*Release)(handle); });
  if (odbcSucceeded(code)) forget(number);
  odbcReturnInteger(vm, code);
}

}  // namespace

KOVO_FUNC(SQLALLOCEN) {
  const OdbcApi* api = odbcApi(vm);
  SQLHENV env = SQL_NULL_HENV;
  SQLRETURN code = api ? api->allocEnv(&env) : SQL_ERROR;
  odbcReturnInteger(vm, code);
  odbcStoreNewHandle(vm, code, env, OdbcKind::environment, 0, 1);
}

KOVO_FUNC(SQLALLOCCO) {
  odbcAllocateUnder<&OdbcApi::allocConnect>(vm, OdbcKind::environment, OdbcKind::connection);
}

KOVO_FUNC(SQLDRIVERC) {
  const OdbcApi* api = odbcApi(vm);
  SQLHDBC dbc = odbcParamHandle(vm, 1, OdbcKind::connection);
  auto input = odbcParamText<SQLSMALLINT>(vm, 2);
  SQLCHAR completed[COMPLETED_CONNECTION_SIZE + 1] = {};
  SQLSMALLINT completedLength = 0;
  // Completion mode 1: the driver asks only for what the string lacks.
  SQLRETURN code = odbcCall(api, dbc, [&](const OdbcApi& dm, SQLHDBC handle) {
    return dm.driverConnect(handle, odbcParentWindow(), input.text, input.length, completed,
                            COMPLETED_CONNECTION_SIZE, &completedLength, SQL_DRIVER_COMPLETE);
  });
  odbcReturnInteger(vm, code);
  const char* text = reinterpret_cast<const char*>(completed);
  hb_storclen(vm, text, odbcTextLength(text, COMPLETED_CONNECTION_SIZE), 3);
}

KOVO_FUNC(SQLCONNECT) {
  const OdbcApi* api = odbcApi(vm);
  SQLHDBC dbc = odbcParamHandle(vm, 1, OdbcKind::connection);
  auto source = odbcParamText<SQLSMALLINT>(vm, 2);
  auto user = odbcParamText<SQLSMALLINT>(vm, 3);
  auto password = odbcParamText<SQLSMALLINT>(vm, 4);
  odbcReturnInteger(vm, odbcCall(api, dbc, [&](const OdbcApi& dm, SQLHDBC handle) {
                      return dm.connect(handle, source.text, source.length, user.text, user.length,
                                        password.text, password.length);
                    }));
}

// Disconnecting frees the connection's statements in the driver manager, so
// their numbers go as well.
KOVO_FUNC(SQLDISCONN) {
  release<&OdbcApi::disconnect>(vm, OdbcKind::connection, odbcHandleForgetStatements);
}

KOVO_FUNC(SQLFREECON) {
  release<&OdbcApi::freeConnect>(vm, OdbcKind::connection, odbcHandleForget);
}

KOVO_FUNC(SQLFREEENV) {
  release<&OdbcApi::freeEnv>(vm, OdbcKind::environment, odbcHandleForget);
}

KOVO_FUNC(SQLCOMMIT) {
  endTransaction(vm, SQL_COMMIT);
}

KOVO_FUNC(SQLROLLBACK) {
  endTransaction(vm, SQL_ROLLBACK);
}
