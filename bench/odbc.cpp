// A fetch loop over a SQLite table of 100,000 rows by 5 columns (two integers,
// three texts of 20 to 200 bytes): through the bridge as a program writes it,
// SQLFETCH and one SQLGETDATA per column, each a call through the host frame,
// and the same loop written in C against the driver manager, in the same run
// on the same table.
#include <sql.h>
#include <sqlext.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <string>

#include "bridges/odbc_functions.h"
#include "reference.h"

namespace {

constexpr int ROWS = 100000;
constexpr int COLUMNS = 5;
constexpr SQLLEN VALUE_BUFFER = 256;  // every value fits at once
constexpr char SELECT_ALL[] = "select id, quantity, name, street, note from t";

// The table, made once for the whole run in a directory of its own.
class BenchDatabase {
 public:
  BenchDatabase() {
    char pattern[] = "/tmp/kovo-odbc-bench-XXXXXX";
    directory_ = mkdtemp(pattern);
    connection_ = "Driver=SQLite3;Database=" + directory_ + "/bench.db";
    SQLHENV env;
    SQLHDBC dbc;
    SQLHSTMT stmt;
    SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env);
    SQLSetEnvAttr(env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    SQLAllocHandle(SQL_HANDLE_DBC, env, &dbc);
    SQLDriverConnect(dbc, nullptr, sqlText(connection_), SQL_NTS, nullptr, 0, nullptr,
                     SQL_DRIVER_NOPROMPT);
    SQLAllocHandle(SQL_HANDLE_STMT, dbc, &stmt);
    std::string fill =
        "create table t (id integer, quantity integer, name text, street text, note text); "
        "insert into t with recursive r(i) as (select 1 union all select i + 1 from r where i < " +
        std::to_string(ROWS) +
        ") select i, i * 7, substr(hex(randomblob(100)), 1, 20 + i % 181), "
        "substr(hex(randomblob(100)), 1, 20 + (i * 13) % 181), "
        "substr(hex(randomblob(100)), 1, 20 + (i * 29) % 181) from r";
    for (size_t start = 0; start < fill.size();) {
      size_t end = fill.find("; ", start);
      if (end == std::string::npos) end = fill.size();
      SQLExecDirect(stmt, sqlText(fill.substr(start, end - start)), SQL_NTS);
      start = end + 2;
    }
    SQLFreeHandle(SQL_HANDLE_STMT, stmt);
    SQLDisconnect(dbc);
    SQLFreeHandle(SQL_HANDLE_DBC, dbc);
    SQLFreeHandle(SQL_HANDLE_ENV, env);
  }
  ~BenchDatabase() { std::filesystem::remove_all(directory_); }

  const std::string& connection() const { return connection_; }

  static SQLCHAR* sqlText(const std::string& text) {
    return reinterpret_cast<SQLCHAR*>(const_cast<char*>(text.c_str()));
  }

 private:
  std::string directory_;
  std::string connection_;
};

const BenchDatabase& database() {
  static BenchDatabase made;
  return made;
}

// The program's side: handles and values live in variables, passed by reference.
class BridgeSession {
 public:
  BridgeSession() : vm_(benchContext()) {
    Item* env = variable();
    Item* dbc = variable();
    Item* completed = variable();
    call(SQLALLOCEN, {env});
    call(SQLALLOCCO, {value(env), dbc});
    call(SQLDRIVERC, {value(dbc), text(database().connection()), completed});
    Item* stmt = variable();
    call(SQLALLOCST, {value(dbc), stmt});
    env_ = itemGetNL(value(env));
    dbc_ = itemGetNL(value(dbc));
    stmt_ = itemPutNL(vm_, itemNew(vm_, nullptr), itemGetNL(value(stmt)));
    for (int column = 0; column < COLUMNS; column++)
      columns_[column] = itemPutNI(vm_, itemNew(vm_, nullptr), column + 1);
    charType_ = itemPutNI(vm_, itemNew(vm_, nullptr), SQL_C_CHAR);
    length_ = itemPutNI(vm_, itemNew(vm_, nullptr), VALUE_BUFFER);
    value_ = variable();
    select_ = text(SELECT_ALL);
  }
  ~BridgeSession() {
    call(SQLFREESTM, {stmt_, number(SQL_DROP)});
    call(SQLDISCONN, {number(dbc_)});
    call(SQLFREECON, {number(dbc_)});
    call(SQLFREEENV, {number(env_)});
    for (Item* item : items_)
      xItemRelease(vm_, item);
    vmDestroy(vm_);
  }

  // One pass over the table; returns the bytes read.
  int64_t scan() {
    call(SQLEXECDIR, {stmt_, select_});
    DynSymbol* fetch = symbol(SQLFETCH);
    DynSymbol* getData = symbol(SQLGETDATA);
    int64_t bytes = 0;
    while (itemGetNI(benchCall(vm_, fetch, {stmt_})) == SQL_SUCCESS) {
      for (Item* column : columns_) {
        benchCall(vm_, getData, {stmt_, column, charType_, length_, value_});
        bytes += itemStrLen(value(value_));
      }
    }
    call(SQLFREESTM, {stmt_, number(SQL_CLOSE)});
    return bytes;
  }

 private:
  // Each function through a symbol of its own, found once, as the
  // interpreter resolves a call site.
  DynSymbol* symbol(VMFunction function) {
    DynSymbol*& found = symbols_[function];
    if (!found) {
      found = xdynsymGet(vm_, ("BENCH" + std::to_string(symbols_.size())).c_str());
      found->function = function;
    }
    return found;
  }
  Item* call(VMFunction function, std::initializer_list<Item*> args) {
    return benchCall(vm_, symbol(function), args);
  }
  Item* keep(Item* item) {
    items_.push_back(item);
    return item;
  }
  Item* variable() {
    Item* nil = itemNew(vm_, nullptr);
    ValueCell* cell = cellNew(vm_, nil);
    xItemRelease(vm_, nil);
    Item* reference = itemPutRef(vm_, keep(itemNew(vm_, nullptr)), cell);
    cellRelease(cell);
    return reference;
  }
  static Item* value(Item* reference) { return &reference->item.asRefer.value->value; }
  Item* number(int32_t n) { return itemPutNL(vm_, keep(itemNew(vm_, nullptr)), n); }
  Item* text(const std::string& bytes) {
    return itemPutCL(vm_, keep(itemNew(vm_, nullptr)), bytes.data(),
                     static_cast<uint32_t>(bytes.size()));
  }

  VMEngine* vm_;
  std::map<VMFunction, DynSymbol*> symbols_;
  std::vector<Item*> items_;
  int32_t env_ = 0, dbc_ = 0;
  Item* stmt_;
  Item* columns_[COLUMNS];
  Item* charType_;
  Item* length_;
  Item* value_;
  Item* select_;
};

void BM_Odbc_FetchLoop_Bridge(benchmark::State& state) {
  database();
  BridgeSession session;
  int64_t bytes = 0;
  for (auto _ : state)
    bytes += session.scan();
  state.SetItemsProcessed(state.iterations() * ROWS);
  state.SetBytesProcessed(bytes);
}

// The reference: the same calls in C, one buffer for every value.
void BM_Odbc_FetchLoop_DriverManager(benchmark::State& state) {
  SQLHENV env;
  SQLHDBC dbc;
  SQLHSTMT stmt;
  SQLAllocEnv(&env);
  SQLAllocConnect(env, &dbc);
  SQLDriverConnect(dbc, nullptr, BenchDatabase::sqlText(database().connection()), SQL_NTS, nullptr,
                   0, nullptr, SQL_DRIVER_NOPROMPT);
  SQLAllocStmt(dbc, &stmt);
  char buffer[VALUE_BUFFER + 1];
  int64_t bytes = 0;
  for (auto _ : state) {
    SQLExecDirect(stmt, BenchDatabase::sqlText(SELECT_ALL), SQL_NTS);
    while (SQLFetch(stmt) == SQL_SUCCESS) {
      for (SQLUSMALLINT column = 1; column <= COLUMNS; column++) {
        SQLLEN indicator = 0;
        SQLGetData(stmt, column, SQL_C_CHAR, buffer, VALUE_BUFFER, &indicator);
        bytes += indicator > 0 ? indicator : 0;
        benchmark::DoNotOptimize(buffer);
      }
    }
    SQLFreeStmt(stmt, SQL_CLOSE);
  }
  SQLFreeStmt(stmt, SQL_DROP);
  SQLDisconnect(dbc);
  SQLFreeConnect(dbc);
  SQLFreeEnv(env);
  state.SetItemsProcessed(state.iterations() * ROWS);
  state.SetBytesProcessed(bytes);
}

BENCHMARK(BM_Odbc_FetchLoop_Bridge)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Odbc_FetchLoop_DriverManager)->Unit(benchmark::kMillisecond);

}  // namespace
