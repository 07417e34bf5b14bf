// The registry functions on the SQLite store, called through the frame,
// beside the same work done directly through SQLite's C API on a database of
// the same shape and settings (write-ahead log, synchronous NORMAL).
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <stdlib.h>

#include <filesystem>
#include <string>
#include <vector>

#include "reference.h"

extern "C" {
void REGCREATEKEY(VMEngine*);
void REGQUERYVALUEEX(VMEngine*);
void REGSETVALUEEX(VMEngine*);
void REGENUMKEYEX(VMEngine*);
}

namespace {

constexpr int32_t CURRENT_USER = static_cast<int32_t>(0x80000001u);

// A temporary folder for the stores of this run, removed at exit.
const std::string& benchFolder() {
  static const std::string folder = [] {
    char pattern[] = "/tmp/kovo-bench-registry-XXXXXX";
    std::string made = mkdtemp(pattern) ? pattern : "/tmp";
    setenv("KOVO_REGISTRY", (made + "/registry.db").c_str(), 1);
    std::atexit([] { std::filesystem::remove_all(benchFolder()); });
    return made;
  }();
  return folder;
}

// A frame bench whose store lives in this run's temporary folder.
class Bench : public BenchFrame {
 public:
  Bench() : BenchFrame() { benchFolder(); }
  // A key below HKEY_CURRENT_USER, opened; its handle as an item.
  Item* key(const std::string& path) {
    Item* handle = reference();
    call(function("REGCREATEKEY", REGCREATEKEY), {number(CURRENT_USER), text(path), handle});
    return keep(itemPutNL(vm(), itemNew(vm(), nullptr), itemGetNL(itemUnRef(vm(), handle))));
  }
};

void BM_RegQueryValueEx(benchmark::State& state) {
  Bench bench;
  Item* key = bench.key("Software\\Bench\\Query");
  bench.call(bench.function("REGSETVALUEEX", REGSETVALUEEX),
             {key, bench.text("Name"), bench.nil(), bench.number(1), bench.text("some value"),
              bench.number(10)});
  DynSymbol* query = bench.function("REGQUERYVALUEEX", REGQUERYVALUEEX);
  Item* name = bench.text("name");
  Item* nil = bench.nil();
  Item* type = bench.reference();
  Item* data = bench.reference();
  Item* size = bench.reference();
  for (auto _ : state)
    benchmark::DoNotOptimize(bench.call(query, {key, name, nil, type, data, size}));
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_RegQueryValueEx);

void BM_RegSetValueEx(benchmark::State& state) {
  Bench bench;
  Item* key = bench.key("Software\\Bench\\Set");
  DynSymbol* set = bench.function("REGSETVALUEEX", REGSETVALUEEX);
  Item* name = bench.text("Name");
  Item* nil = bench.nil();
  Item* type = bench.number(1);
  Item* values[2] = {bench.text("first value"), bench.text("other value")};
  Item* size = bench.number(11);
  int turn = 0;
  for (auto _ : state)
    benchmark::DoNotOptimize(bench.call(set, {key, name, nil, type, values[turn ^= 1], size}));
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_RegSetValueEx);

// Every sub-key of a key with state.range(0) of them, index by index.
void BM_RegEnumKeyEx(benchmark::State& state) {
  Bench bench;
  auto count = static_cast<int32_t>(state.range(0));
  std::string path = "Software\\Bench\\Enum" + std::to_string(count);
  Item* key = bench.key(path);
  DynSymbol* create = bench.function("REGCREATEKEY", REGCREATEKEY);
  Item* handle = bench.reference();
  for (int32_t i = 0; i < count; i++)
    bench.call(create, {key, bench.text("Sub" + std::to_string(i)), handle});
  DynSymbol* enumerate = bench.function("REGENUMKEYEX", REGENUMKEYEX);
  std::vector<Item*> indexes;
  for (int32_t i = 0; i < count; i++)
    indexes.push_back(bench.number(i));
  Item* name = bench.reference();
  Item* length = bench.reference();
  for (auto _ : state) {
    for (Item* index : indexes)
      benchmark::DoNotOptimize(bench.call(enumerate, {key, index, name, length}));
  }
  state.SetItemsProcessed(state.iterations() * count);
  state.SetComplexityN(count);
}
BENCHMARK(BM_RegEnumKeyEx)->Arg(1000)->Arg(10000)->Complexity(benchmark::oN);

// ---- The same work through SQLite's C API ----------------------------------------------

class Direct {
 public:
  Direct() {
    std::string path = benchFolder() + "/direct.db";
    sqlite3_open(path.c_str(), &db_);
    sqlite3_exec(db_,
                 "PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL;"
                 "CREATE TABLE IF NOT EXISTS keys(id INTEGER PRIMARY KEY, parent INTEGER NOT NULL,"
                 " name BLOB NOT NULL, fold BLOB NOT NULL, class BLOB NOT NULL DEFAULT x'');"
                 "CREATE UNIQUE INDEX IF NOT EXISTS keys_by_name ON keys(parent, fold);"
                 "CREATE TABLE IF NOT EXISTS vals(key INTEGER NOT NULL, fold BLOB NOT NULL,"
                 " name BLOB NOT NULL, type INTEGER NOT NULL, data BLOB NOT NULL,"
                 " PRIMARY KEY(key, fold)) WITHOUT ROWID;",
                 nullptr, nullptr, nullptr);
  }
  ~Direct() {
    for (sqlite3_stmt* statement : statements_)
      sqlite3_finalize(statement);
    sqlite3_close(db_);
  }
  // A statement kept until the end of the benchmark.
  sqlite3_stmt* prepare(const char* text) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v3(db_, text, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    statements_.push_back(statement);
    return statement;
  }
  void exec(const char* text) { sqlite3_exec(db_, text, nullptr, nullptr, nullptr); }
  // Binds the key and the name of the one value that a reference reads or writes.
  static void bindValue(sqlite3_stmt* statement, int64_t key) {
    sqlite3_bind_int64(statement, 1, key);
    sqlite3_bind_blob(statement, 2, "NAME", 4, SQLITE_STATIC);
  }

 private:
  sqlite3* db_ = nullptr;
  std::vector<sqlite3_stmt*> statements_;
};

void BM_SQLite_SelectValue(benchmark::State& state) {
  Direct direct;
  direct.exec("INSERT OR REPLACE INTO vals VALUES(7, 'NAME', 'Name', 1, 'some value')");
  sqlite3_stmt* select = direct.prepare("SELECT type, data FROM vals WHERE key = ?1 AND fold = ?2");
  for (auto _ : state) {
    Direct::bindValue(select, 7);
    sqlite3_step(select);
    benchmark::DoNotOptimize(sqlite3_column_blob(select, 1));
    sqlite3_reset(select);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_SQLite_SelectValue);

void BM_SQLite_UpsertValue(benchmark::State& state) {
  Direct direct;
  sqlite3_stmt* upsert = direct.prepare(
      "INSERT INTO vals(key, fold, name, type, data) VALUES(?1, ?2, ?2, 1, ?3)"
      " ON CONFLICT(key, fold) DO UPDATE SET type = excluded.type, data = excluded.data");
  const char* values[2] = {"first value", "other value"};
  int turn = 0;
  for (auto _ : state) {
    Direct::bindValue(upsert, 8);
    sqlite3_bind_blob(upsert, 3, values[turn ^= 1], 12, SQLITE_STATIC);
    sqlite3_step(upsert);
    sqlite3_reset(upsert);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_SQLite_UpsertValue);

void BM_SQLite_ListKeys(benchmark::State& state) {
  Direct direct;
  auto count = static_cast<int32_t>(state.range(0));
  int64_t parent = 1000000 + count;
  direct.exec("BEGIN");
  sqlite3_stmt* insert =
      direct.prepare("INSERT OR IGNORE INTO keys(parent, name, fold) VALUES(?1, ?2, upper(?2))");
  for (int32_t i = 0; i < count; i++) {
    std::string name = "Sub" + std::to_string(i);
    sqlite3_bind_int64(insert, 1, parent);
    sqlite3_bind_text(insert, 2, name.c_str(), -1, SQLITE_TRANSIENT);
    sqlite3_step(insert);
    sqlite3_reset(insert);
  }
  direct.exec("COMMIT");
  sqlite3_stmt* list = direct.prepare("SELECT name FROM keys WHERE parent = ?1 ORDER BY fold");
  for (auto _ : state) {
    sqlite3_bind_int64(list, 1, parent);
    while (sqlite3_step(list) == SQLITE_ROW)
      benchmark::DoNotOptimize(sqlite3_column_blob(list, 0));
    sqlite3_reset(list);
  }
  state.SetItemsProcessed(state.iterations() * count);
  state.SetComplexityN(count);
}
BENCHMARK(BM_SQLite_ListKeys)->Arg(1000)->Arg(10000)->Complexity(benchmark::oN);

}  // namespace
