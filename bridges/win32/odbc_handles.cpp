// On 32-bit Windows an ODBC handle fits the numbers programs carry: the
// number is the driver manager's own handle value, which checks it itself.
#include <cstdint>

#include "bridges/odbc_api.h"

SQLHANDLE odbcHandleFind(int32_t number, OdbcKind) {
  return reinterpret_cast<SQLHANDLE>(static_cast<intptr_t>(number));
}

int32_t odbcHandleAdd(SQLHANDLE handle, OdbcKind, int32_t) {
  return static_cast<int32_t>(reinterpret_cast<intptr_t>(handle));
}

void odbcHandleForget(int32_t) {}

void odbcHandleForgetStatements(int32_t) {}
