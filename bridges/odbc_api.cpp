#include "bridges/odbc_api.h"

#include <atomic>
#include <cstdio>

#include "kovo/host_misc.h"

namespace {

constexpr size_t FAILURE_TEXT_SIZE = 512;

struct DriverManager {
  OdbcApi api{};
  bool loaded = false;
  char failure[FAILURE_TEXT_SIZE] = {};
};

// Binds every call the bridge makes; the first one missing is remembered.
class Binder {
 public:
  explicit Binder(void* library) : library_(library) {}

  template <class Function>
  void bind(Function& slot, const char* name, int ordinal) {
    void* function = odbcLibraryFunction(library_, name, ordinal);
    if (!function && !missing_) missing_ = name;
    slot = reinterpret_cast<Function>(function);
  }
  const char* missing() const { return missing_; }

 private:
  void* library_;
  const char* missing_ = nullptr;
};

DriverManager load() {
  DriverManager manager;
  char what[FAILURE_TEXT_SIZE / 2] = {};
  void* library = odbcLibraryOpen(what, sizeof what);
  if (!library) {
    std::snprintf(manager.failure, sizeof manager.failure,
                  "ODBC: the driver manager could not be loaded (%s)", what);
    return manager;
  }
  OdbcApi& api = manager.api;
  Binder binder(library);
  binder.bind(api.allocConnect, "SQLAllocConnect", 1);
  binder.bind(api.allocEnv, "SQLAllocEnv", 2);
  binder.bind(api.allocStmt, "SQLAllocStmt", 3);
  binder.bind(api.connect, "SQLConnect", 7);
  binder.bind(api.describeCol, "SQLDescribeCol", 8);
  binder.bind(api.disconnect, "SQLDisconnect", 9);
  binder.bind(api.error, "SQLError", 10);
  binder.bind(api.execDirect, "SQLExecDirect", 11);
  binder.bind(api.fetch, "SQLFetch", 13);
  binder.bind(api.freeConnect, "SQLFreeConnect", 14);
  binder.bind(api.freeEnv, "SQLFreeEnv", 15);
  binder.bind(api.freeStmt, "SQLFreeStmt", 16);
  binder.bind(api.numResultCols, "SQLNumResultCols", 18);
  binder.bind(api.rowCount, "SQLRowCount", 20);
  binder.bind(api.transact, "SQLTransact", 23);
  binder.bind(api.colAttribute, "SQLColAttribute", 27);
  binder.bind(api.fetchScroll, "SQLFetchScroll", 30);
  binder.bind(api.driverConnect, "SQLDriverConnect", 41);
  binder.bind(api.getConnectOption, "SQLGetConnectOption", 42);
  binder.bind(api.getData, "SQLGetData", 43);
  binder.bind(api.getInfo, "SQLGetInfo", 45);
  binder.bind(api.getStmtOption, "SQLGetStmtOption", 46);
  binder.bind(api.setConnectOption, "SQLSetConnectOption", 50);
  binder.bind(api.setStmtOption, "SQLSetStmtOption", 51);
  binder.bind(api.extendedFetch, "SQLExtendedFetch", 59);
  if (binder.missing()) {
    std::snprintf(manager.failure, sizeof manager.failure,
                  "ODBC: the driver manager %s has no function %s", what, binder.missing());
    return manager;
  }
  manager.loaded = true;
  return manager;
}

std::atomic<bool> failureReported{false};

}  // namespace

const OdbcApi* odbcApi(VMEngine* vm) {
  // Loaded once for the process, on the first call of any thread.
  static const DriverManager manager = load();
  if (manager.loaded) return &manager.api;
  if (!failureReported.exchange(true)) kovo_report_error(vm, manager.failure);
  return nullptr;
}
