// The driver manager as the bridge sees it: the ODBC calls it makes, bound
// once per process, and the numbers that programs carry for ODBC handles.
#pragma once

// The platform's ODBC headers (bridges/<platform>/, on the include path).
#include "odbc_sql.h"

#include <cstdint>

#include "kovo/vmengine.h"

// Each member has the type of the driver manager's function of that name, as
// the platform's headers declare it.
struct OdbcApi {
  decltype(&::SQLAllocConnect) allocConnect;
  decltype(&::SQLAllocEnv) allocEnv;
  decltype(&::SQLAllocStmt) allocStmt;
  decltype(&::SQLConnect) connect;
  decltype(&::SQLDescribeCol) describeCol;
  decltype(&::SQLDisconnect) disconnect;
  decltype(&::SQLError) error;
  decltype(&::SQLExecDirect) execDirect;
  decltype(&::SQLFetch) fetch;
  decltype(&::SQLFreeConnect) freeConnect;
  decltype(&::SQLFreeEnv) freeEnv;
  decltype(&::SQLFreeStmt) freeStmt;
  decltype(&::SQLNumResultCols) numResultCols;
  decltype(&::SQLRowCount) rowCount;
  decltype(&::SQLTransact) transact;
  decltype(&::SQLColAttribute) colAttribute;
  decltype(&::SQLFetchScroll) fetchScroll;
  decltype(&::SQLDriverConnect) driverConnect;
  decltype(&::SQLGetConnectOption) getConnectOption;
  decltype(&::SQLGetData) getData;
  decltype(&::SQLGetInfo) getInfo;
  decltype(&::SQLGetStmtOption) getStmtOption;
  decltype(&::SQLSetConnectOption) setConnectOption;
  decltype(&::SQLSetStmtOption) setStmtOption;
  decltype(&::SQLExtendedFetch) extendedFetch;
};

// The bound calls, or null when the driver manager cannot be had; the first
// failure is reported through `vm`, saying what was looked for.
const OdbcApi* odbcApi(VMEngine* vm);

// ---- What each platform supplies ----------------------------------------------
// Opens the driver manager; on failure returns null and writes into `what`
// (a buffer of `size` bytes) what was looked for and why it failed.
void* odbcLibraryOpen(char* what, size_t size);
// One function of the opened driver manager, by its name or by its ordinal in
// the driver manager's published export numbering, whichever the platform uses.
void* odbcLibraryFunction(void* library, const char* name, int ordinal);
// The window that SQLDriverConnect may prompt over.
SQLHWND odbcParentWindow();

// ---- Handle numbers -------------------------------------------------------------
enum class OdbcKind : uint8_t { environment, connection, statement };

// The handle that a number stands for, or null when the number stands for no
// live handle of that kind. Zero never stands for a handle.
SQLHANDLE odbcHandleFind(int32_t number, OdbcKind kind);
// The number that programs get for a new handle; `owner` is the number of the
// connection of a statement or the environment of a connection.
int32_t odbcHandleAdd(SQLHANDLE handle, OdbcKind kind, int32_t owner);
// Forgets a freed handle and, for a connection, its statements, which the
// driver manager frees with it.
void odbcHandleForget(int32_t number);
// Forgets the statements of a connection, freed by its disconnection.
void odbcHandleForgetStatements(int32_t connection);
