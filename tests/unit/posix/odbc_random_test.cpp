// The ODBC bridge called the way no program should: every function in random
// order with random arguments, numbers of live, freed and never-issued
// handles, against SQLite in a directory of the test's own. Nothing may
// crash, leak or trip the sanitizers, and a number never handed out must come
// back as an invalid handle without reaching the driver manager.
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "bridges/odbc_api.h"
#include "bridges/odbc_functions.h"
#include "vm_fixture.h"

namespace {

constexpr int CALLS = 100000;
constexpr int OUTPUTS = 6;

// What each function takes after its first handle: the generator of one call.
enum class Arg {
  env,
  dbc,
  stmt,
  byRef,
  sql,
  connection,
  text,
  small,
  number,
  column,
  cType,
  length,
  option
};

struct Function {
  const char* name;
  VMFunction function;
  std::vector<Arg> args;
  bool sixteenBit;  // SQL_INVALID_HANDLE comes back as 65534
  int weight;
  int allocates = -1;  // the kind of handle it stores into its first output
};

const std::vector<Function> FUNCTIONS = {
    {"SQLALLOCEN", SQLALLOCEN, {Arg::byRef}, false, 2, 0},
    {"SQLALLOCCO", SQLALLOCCO, {Arg::env, Arg::byRef}, false, 3, 1},
    {"SQLDRIVERC", SQLDRIVERC, {Arg::dbc, Arg::connection, Arg::byRef}, false, 3},
    {"SQLCONNECT", SQLCONNECT, {Arg::dbc, Arg::text, Arg::text, Arg::text}, false, 1},
    {"SQLDISCONN", SQLDISCONN, {Arg::dbc}, false, 2},
    {"SQLFREECON", SQLFREECON, {Arg::dbc}, false, 2},
    {"SQLFREEENV", SQLFREEENV, {Arg::env}, false, 2},
    {"SQLALLOCST", SQLALLOCST, {Arg::dbc, Arg::byRef}, false, 8, 2},
    {"SQLFREESTM", SQLFREESTM, {Arg::stmt, Arg::small}, false, 6},
    {"SQLEXECDIR", SQLEXECDIR, {Arg::stmt, Arg::sql}, false, 14},
    {"SQLFETCH", SQLFETCH, {Arg::stmt}, false, 10},
    {"SQLFETCHSC", SQLFETCHSC, {Arg::stmt, Arg::small, Arg::small}, false, 4},
    {"SQLEXTENDE",
     SQLEXTENDE,
     {Arg::stmt, Arg::small, Arg::small, Arg::byRef, Arg::byRef},
     true,
     4},
    {"SQLNUMRES", SQLNUMRES, {Arg::stmt, Arg::byRef}, false, 3},
    {"SQLROWCOUN", SQLROWCOUN, {Arg::stmt, Arg::byRef}, true, 3},
    {"SQLDESCRIB",
     SQLDESCRIB,
     {Arg::stmt, Arg::column, Arg::byRef, Arg::length, Arg::byRef, Arg::byRef, Arg::byRef,
      Arg::byRef, Arg::byRef},
     true,
     4},
    {"SQLCOLATTRIBUTE",
     SQLCOLATTRIBUTE,
     {Arg::stmt, Arg::column, Arg::option, Arg::byRef, Arg::length, Arg::byRef, Arg::byRef},
     true,
     4},
    {"SQLGETDATA",
     SQLGETDATA,
     {Arg::stmt, Arg::column, Arg::cType, Arg::length, Arg::byRef},
     true,
     16},
    {"SQLERROR",
     SQLERROR,
     {Arg::env, Arg::dbc, Arg::stmt, Arg::byRef, Arg::byRef, Arg::byRef},
     false,
     4},
    {"SQLGETINFO", SQLGETINFO, {Arg::dbc, Arg::option, Arg::byRef}, true, 3},
    {"SQLSETCONNECTOPTION", SQLSETCONNECTOPTION, {Arg::dbc, Arg::option, Arg::number}, false, 2},
    {"SQLSETSTMTOPTION", SQLSETSTMTOPTION, {Arg::stmt, Arg::option, Arg::number}, false, 3},
    {"SQLGETCONNECTOPTION", SQLGETCONNECTOPTION, {Arg::dbc, Arg::option, Arg::byRef}, true, 2},
    {"SQLGETSTMTOPTION", SQLGETSTMTOPTION, {Arg::stmt, Arg::option, Arg::byRef}, true, 2},
    {"SQLCOMMIT", SQLCOMMIT, {Arg::env, Arg::dbc}, false, 2},
    {"SQLROLLBACK", SQLROLLBACK, {Arg::env, Arg::dbc}, false, 2},
};

const std::vector<std::string> STATEMENTS = {
    "create table t (id integer, name varchar(200), price numeric(10, 2))",
    "insert into t values (1, 'one', 1.5), (2, null, 2.25), (3, '" + std::string(150, 'x') +
        "', 0)",
    "select id, name, price from t",
    "select * from t where id > 1",
    "select 42, null, 'abc', x'00ff00', 1.5e300",
    "delete from t where id = 2",
    "update t set name = 'u'",
    "select * from nosuch",
    "this is no sql",
    "",
};

// Driver manager options and information types, including ones that take
// addresses, strings, nonsense numbers. Tracing (104-106) is left out: it
// writes files outside the test's directory.
const std::vector<int32_t> OPTIONS = {
    0,   1,   2,   3,   4,   5,    6,    7,    8,    9,    10,    11,    12,   13,  14,   16,
    17,  19,  20,  21,  23,  24,   25,   26,   27,   17,   6,     101,   102,  103, 107,  108,
    109, 110, 111, 112, 113, 1001, 1002, 1011, 1012, 1013, 10010, 10011, 9999, -1,  65535};

const std::vector<int32_t> C_TYPES = {0,  1, -2, 4, 5,   8,   -8,  91,  93,   2,
                                      -6, 7, 99, 3, -99, -25, 102, 104, 65534};

}  // namespace

class OdbcRandomTest : public VmTest {
 protected:
  void SetUp() override {
    VmTest::SetUp();
    char pattern[] = "/tmp/kovo-odbc-random-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    directory_ = pattern;
    connection_ = "Driver=SQLite3;SyncPragma=off;Timeout=1;Database=" + directory_ + "/random.db";
    for (Item*& output : outputs_)
      output = ref(nil());
  }
  void TearDown() override {
    // Everything still live goes back to the driver manager before the
    // database goes away.
    for (int32_t number : issued_) {
      callNumbers(SQLFREESTM, {number, 1});
      callNumbers(SQLDISCONN, {number});
      callNumbers(SQLFREECON, {number});
      callNumbers(SQLFREEENV, {number});
    }
    std::filesystem::remove_all(directory_);
    VmTest::TearDown();
  }

  Item* callWith(VMFunction function, std::vector<Item*>& args) {
    DynSymbol* symbol = xdynsymGet(vm, "TESTED");
    symbol->function = function;
    vm->extendedFrames = extended;
    return vmCallFunction(vm, symbol, static_cast<uint32_t>(args.size()), args.data());
  }

  void callNumbers(VMFunction function, std::initializer_list<int32_t> numbers) {
    std::vector<Item*> args;
    for (int32_t number : numbers)
      args.push_back(num(number));
    callWith(function, args);
  }

  // Mostly a recent number of the kind wanted, which is often live; else
  // any number handed out, live or freed, of any kind; else 0, a negative
  // number, or one that was never handed out.
  int32_t handleNumber(int kind) {
    int roll = static_cast<int>(rng_() % 100);
    const std::vector<int32_t>& ofKind = byKind_[kind];
    if (roll < 60 && !ofKind.empty()) {
      size_t recent = std::min<size_t>(ofKind.size(), 4);
      return ofKind[ofKind.size() - 1 - rng_() % recent];
    }
    if (roll < 80 && !issued_.empty()) {
      auto at = issued_.begin();
      std::advance(at, rng_() % issued_.size());
      return *at;
    }
    if (roll < 86) return 0;
    if (roll < 90) return -static_cast<int32_t>(rng_() % 1000);
    return static_cast<int32_t>(rng_() % 0x7FFFFFFF);
  }

  // Items of one call, released after it.
  Item* scratch() {
    scratch_.push_back(itemNew(vm, nullptr));
    return scratch_.back();
  }
  Item* number(int32_t value) { return itemPutNI(vm, scratch(), value); }
  Item* text(const std::string& bytes) {
    return itemPutCL(vm, scratch(), bytes.data(), static_cast<uint32_t>(bytes.size()));
  }
  void releaseScratch() {
    for (Item* item : scratch_)
      xItemRelease(vm, item);
    scratch_.clear();
  }

  Item* argument(Arg kind, int* outputIndex, bool* neverIssued, bool first) {
    switch (kind) {
      case Arg::env:
      case Arg::dbc:
      case Arg::stmt: {
        int32_t value = handleNumber(static_cast<int>(kind) - static_cast<int>(Arg::env));
        if (first) *neverIssued = value != 0 && !issued_.count(value);
        return number(value);
      }
      case Arg::byRef:
        return outputs_[(*outputIndex)++ % OUTPUTS];
      case Arg::sql:
        if (rng_() % 200 == 0) {
          Item* array = scratch();
          arrayNew(vm, array, 1);
          return array;
        }
        return text(STATEMENTS[rng_() % STATEMENTS.size()]);
      case Arg::connection:
        switch (rng_() % 4) {
          case 0:
            return text("Driver=NoSuchDriver");
          case 1:
            return text("");
          default:
            return text(connection_);
        }
      case Arg::text:
        return text(std::string(rng_() % 40, 'a'));
      case Arg::small:
        if (rng_() % 10 == 0) return text("text");
        return number(static_cast<int32_t>(rng_() % 12) - 2);
      // Option values are numbers: a string's address as a rowset size
      // has the driver walk rows for ever, which is no crash but no test.
      case Arg::number:
        return number(static_cast<int32_t>(rng_() % 12) - 2);
      case Arg::column:
        return number(static_cast<int32_t>(rng_() % 7) - 1);
      case Arg::cType:
        return number(C_TYPES[rng_() % C_TYPES.size()]);
      case Arg::length: {
        static const int32_t LENGTHS[] = {0, 1, 2, 3, 10, 63, 64, 65, 100, 300, -1, -64, 70000};
        return number(LENGTHS[rng_() % std::size(LENGTHS)]);
      }
      case Arg::option:
        return number(OPTIONS[rng_() % OPTIONS.size()]);
    }
    return scratch();
  }

  // The number an allocating function stored is a handle of its kind.
  void collectHandle(const Function& function) {
    int kind = function.allocates;
    Item* value = target(outputs_[0]);
    if (kind >= 0 && (value->type & HB_IT_NUMERIC) && itemGetNI(value) > 0) {
      issued_.insert(itemGetNI(value));
      byKind_[kind].push_back(itemGetNI(value));
    }
    for (Item* output : outputs_)
      itemClear(vm, target(output));
  }

  std::mt19937 rng_{20261124};
  std::string directory_;
  std::string connection_;
  std::set<int32_t> issued_;
  std::vector<int32_t> byKind_[3];
  Item* outputs_[OUTPUTS] = {};
  std::vector<Item*> scratch_;
};

TEST_F(OdbcRandomTest, RandomCallsNeverCrashAndUnknownNumbersAreInvalid) {
  int totalWeight = 0;
  for (const Function& f : FUNCTIONS)
    totalWeight += f.weight;
  int invalidChecked = 0;
  std::map<std::string, int> succeeded;
  for (int call = 0; call < CALLS; call++) {
    int pick = static_cast<int>(rng_() % totalWeight);
    const Function* chosen = &FUNCTIONS.front();
    for (const Function& f : FUNCTIONS) {
      if (pick < f.weight) {
        chosen = &f;
        break;
      }
      pick -= f.weight;
    }
    extended = rng_() % 2;
    int outputIndex = 0;
    bool neverIssued = false;
    std::vector<Item*> args;
    for (size_t i = 0; i < chosen->args.size(); i++)
      args.push_back(argument(chosen->args[i], &outputIndex, &neverIssued, i == 0));
    // Some calls leave trailing parameters out.
    if (!args.empty() && rng_() % 8 == 0) args.resize(rng_() % args.size() + 1);
    size_t exceptionsBefore = exceptions.size();
    Item* result = callWith(chosen->function, args);
    // SQLERROR and the transactions accept 0 beside another handle; the rest
    // must refuse a number they never gave out without asking anybody.
    bool singleHandle = std::count_if(chosen->args.begin(), chosen->args.end(), [](Arg arg) {
                          return arg == Arg::env || arg == Arg::dbc || arg == Arg::stmt;
                        }) == 1;
    if (neverIssued && singleHandle && exceptions.size() == exceptionsBefore) {
      ASSERT_EQ(itemGetNI(result), chosen->sixteenBit ? 65534 : -2) << chosen->name;
      invalidChecked++;
    }
    if (exceptions.size() == exceptionsBefore && itemGetNI(result) == SQL_SUCCESS) {
      succeeded[chosen->name]++;
    }
    collectHandle(*chosen);
    releaseScratch();
  }
  EXPECT_GT(invalidChecked, 1000);
  // The walk reached data, not only errors.
  for (const char* name : {"SQLDRIVERC", "SQLEXECDIR", "SQLFETCH", "SQLGETDATA", "SQLDESCRIB"})
    EXPECT_GT(succeeded[name], 100) << name;
}
