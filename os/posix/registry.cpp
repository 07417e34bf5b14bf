// The registry of a system that has none: an SQLite database shared by every
// process of the user, in write-ahead-log mode, each write committed before
// the call returns. Names are kept as given and found by their upper-cased
// form, as Windows compares them.
#include "os/registry.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "kovo/host_misc.h"
#include "os/cp1251.h"

namespace {

// Marks a database as a registry store ("KvRg"); anything else is left alone.
constexpr int32_t STORE_APPLICATION_ID = 0x4B765267;
constexpr int32_t STORE_SCHEMA_VERSION = 1;

const char SCHEMA[] =
    "CREATE TABLE keys(id INTEGER PRIMARY KEY, parent INTEGER NOT NULL, name BLOB NOT NULL,"
    " fold BLOB NOT NULL, class BLOB NOT NULL DEFAULT x'');"
    "CREATE UNIQUE INDEX keys_by_name ON keys(parent, fold);"
    "CREATE TABLE vals(key INTEGER NOT NULL, fold BLOB NOT NULL, name BLOB NOT NULL,"
    " type INTEGER NOT NULL, data BLOB NOT NULL, PRIMARY KEY(key, fold)) WITHOUT ROWID;"
    "INSERT INTO keys(id, parent, name, fold) VALUES"
    " (1, 0, 'HKEY_CLASSES_ROOT', 'HKEY_CLASSES_ROOT'),"
    " (2, 0, 'HKEY_CURRENT_USER', 'HKEY_CURRENT_USER'),"
    " (3, 0, 'HKEY_LOCAL_MACHINE', 'HKEY_LOCAL_MACHINE'),"
    " (4, 0, 'HKEY_USERS', 'HKEY_USERS'),"
    " (6, 0, 'HKEY_CURRENT_CONFIG', 'HKEY_CURRENT_CONFIG');";

enum Statement {
  FIND_KEY,
  INSERT_KEY,
  KEY_EXISTS,
  QUERY_VALUE,
  SET_VALUE,
  KEY_AT,
  KEY_AFTER,
  VALUE_AT,
  VALUE_AFTER,
  HAS_SUBKEY,
  DELETE_VALUES,
  DELETE_KEY,
  DELETE_VALUE,
  BEGIN,
  COMMIT,
  ROLLBACK,
  STATEMENT_COUNT
};

const char* const STATEMENT_TEXT[STATEMENT_COUNT] = {
    "SELECT id FROM keys WHERE parent = ?1 AND fold = ?2",
    "INSERT INTO keys(parent, name, fold, class) VALUES(?1, ?2, ?3, ?4)",
    "SELECT 1 FROM keys WHERE id = ?1",
    "SELECT type, data FROM vals WHERE key = ?1 AND fold = ?2",
    "INSERT INTO vals(key, fold, name, type, data) SELECT ?1, ?2, ?3, ?4, ?5"
    " WHERE EXISTS(SELECT 1 FROM keys WHERE id = ?1)"
    " ON CONFLICT(key, fold) DO UPDATE SET type = excluded.type, data = excluded.data",
    "SELECT name, class, fold FROM keys WHERE parent = ?1 ORDER BY fold LIMIT 1 OFFSET ?2",
    "SELECT name, class, fold FROM keys WHERE parent = ?1 AND fold > ?2 ORDER BY fold LIMIT 1",
    "SELECT name, type, data, fold FROM vals WHERE key = ?1 ORDER BY fold LIMIT 1 OFFSET ?2",
    "SELECT name, type, data, fold FROM vals WHERE key = ?1 AND fold > ?2 ORDER BY fold LIMIT 1",
    "SELECT 1 FROM keys WHERE parent = ?1 LIMIT 1",
    "DELETE FROM vals WHERE key = ?1",
    "DELETE FROM keys WHERE id = ?1",
    "DELETE FROM vals WHERE key = ?1 AND fold = ?2",
    "BEGIN IMMEDIATE",
    "COMMIT",
    "ROLLBACK",
};

// Where an enumeration stands, so that asking for the next index costs one
// index step instead of a walk from the start.
struct EnumCursor {
  bool valid = false;
  uint32_t index = 0;
  std::string fold;
};

// A program asks for a value twice in a row, first for its size and then
// for its bytes: the row read by the first call serves the second, as one
// read at the moment of the first. Any other call of the store drops it.
struct LastQuery {
  bool valid = false;
  uint32_t key = 0;
  std::string fold;
  uint32_t type = 0;
  std::string data;
};

constexpr int64_t NO_KEY = 0;

struct OpenKey {
  bool used = false;
  int64_t id = NO_KEY;
  uint32_t access = 0;
  EnumCursor keys;
  EnumCursor values;
};

std::string folded(const char* name, size_t length) {
  std::string fold(name, length);
  for (char& c : fold)
    c = static_cast<char>(cp1251Upper(static_cast<unsigned char>(c)));
  return fold;
}

// A statement's row, reset on leaving scope so that the next call finds it ready.
class Row {
 public:
  explicit Row(sqlite3_stmt* statement) : statement_(statement) {}
  // Every use binds all parameters again, so the old bindings may stay.
  ~Row() { sqlite3_reset(statement_); }
  Row(const Row&) = delete;
  Row& operator=(const Row&) = delete;

  Row& bind(int index, int64_t value) {
    sqlite3_bind_int64(statement_, index, value);
    return *this;
  }
  Row& bind(int index, const std::string& bytes) {
    sqlite3_bind_blob(statement_, index, bytes.data(), static_cast<int>(bytes.size()),
                      SQLITE_STATIC);
    return *this;
  }
  Row& bind(int index, const void* bytes, uint32_t size) {
    sqlite3_bind_blob(statement_, index, size ? bytes : "", static_cast<int>(size), SQLITE_STATIC);
    return *this;
  }
  // SQLITE_ROW, SQLITE_DONE or an error.
  int step() { return sqlite3_step(statement_); }
  int64_t integer(int column) const { return sqlite3_column_int64(statement_, column); }
  const char* bytes(int column) const {
    const void* data = sqlite3_column_blob(statement_, column);
    return data ? static_cast<const char*>(data) : "";
  }
  uint32_t size(int column) const {
    return static_cast<uint32_t>(sqlite3_column_bytes(statement_, column));
  }

 private:
  sqlite3_stmt* statement_;
};

class Store {
 public:
  ~Store() { close(); }

  // Every operation holds this: the table of open keys and the connection
  // are shared by the threads of the process. Recursive for batches.
  std::recursive_mutex mutex;
  LastQuery lastQuery;

  // The store named by the environment now, opened when needed; false (the
  // reason reported) when it cannot be used.
  bool ready(VMEngine* vm);
  void close();

  sqlite3_stmt* statement(Statement which) { return statements_[which]; }
  // Reports the connection's last error and gives the code programs see.
  int32_t failure(VMEngine* vm, const char* action);
  // The key a number names: a root key or an open handle; null when none.
  OpenKey* lookup(uint32_t key);
  uint32_t addHandle(int64_t id, uint32_t access);
  bool removeHandle(uint32_t key);

  // Runs a write: in a transaction of its own unless a batch holds one.
  template <typename Work>
  int32_t write(VMEngine* vm, Work work);
  int32_t batch(VMEngine* vm, int32_t (*work)(VMEngine*, void*), void* cargo);

  // The key below `from` that a sub-key name leads to; creates missing
  // levels when `create` is set (telling whether the last one was new).
  int32_t walk(VMEngine* vm, int64_t from, const char* subKey, bool create,
               const std::string& className, int64_t* found, bool* created);

 private:
  std::string path_;
  sqlite3* db_ = nullptr;
  sqlite3_stmt* statements_[STATEMENT_COUNT] = {};
  std::vector<OpenKey> handles_;
  OpenKey roots_[8];
  std::vector<uint32_t> freeHandles_;
  int batchDepth_ = 0;
  bool batchFailed_ = false;

  bool open(VMEngine* vm);
  bool refuse(VMEngine* vm, const std::string& why);
  bool prepareSchema(VMEngine* vm);
};

Store& theStore() {
  static Store store;
  return store;
}

std::string storePath() {
  const char* chosen = std::getenv("KOVO_REGISTRY");
  if (chosen && *chosen) return chosen;
  const char* data = std::getenv("XDG_DATA_HOME");
  if (data && *data) return std::string(data) + "/kovo/registry.db";
  const char* home = std::getenv("HOME");
  return std::string(home ? home : ".") + "/.local/share/kovo/registry.db";
}

// Creates the folders above a file as `mkdir -p` does.
void makeParents(const std::string& path) {
  for (size_t slash = path.find('/', 1); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    std::string folder = path.substr(0, slash);
    if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) return;
  }
}

bool Store::ready(VMEngine* vm) {
  const char* chosen = std::getenv("KOVO_REGISTRY");
  if (db_ && chosen && *chosen && path_ == chosen) return true;
  std::string path = storePath();
  if (db_ && path == path_) return true;
  close();
  path_ = path;
  return open(vm);
}

void Store::close() {
  for (sqlite3_stmt*& statement : statements_) {
    sqlite3_finalize(statement);
    statement = nullptr;
  }
  if (db_) sqlite3_close_v2(db_);
  db_ = nullptr;
  // Handles of another store mean nothing here.
  handles_.clear();
  freeHandles_.clear();
  for (OpenKey& root : roots_)
    root = OpenKey{};
  batchDepth_ = 0;
}

bool Store::refuse(VMEngine* vm, const std::string& why) {
  kovo_report_error(vm, ("registry store " + path_ + " refused: " + why).c_str());
  close();
  return false;
}

bool Store::open(VMEngine* vm) {
  makeParents(path_);
  if (sqlite3_open_v2(path_.c_str(), &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) !=
      SQLITE_OK) {
    return refuse(vm, db_ ? sqlite3_errmsg(db_) : "out of memory");
  }
  // How long a call waits for another process's write before it gives up.
  constexpr int busyTimeoutMs = 30000;
  sqlite3_busy_timeout(db_, busyTimeoutMs);
  if (!prepareSchema(vm)) return false;
  // Readers never wait for the writer, and a commit is durable against the
  // process dying once the log has it.
  sqlite3_stmt* mode = nullptr;
  sqlite3_prepare_v2(db_, "PRAGMA journal_mode = WAL", -1, &mode, nullptr);
  bool wal = mode && sqlite3_step(mode) == SQLITE_ROW &&
             std::strcmp(reinterpret_cast<const char*>(sqlite3_column_text(mode, 0)), "wal") == 0;
  sqlite3_finalize(mode);
  if (!wal) return refuse(vm, std::string("no write-ahead log: ") + sqlite3_errmsg(db_));
  if (sqlite3_exec(db_, "PRAGMA synchronous = NORMAL", nullptr, nullptr, nullptr) != SQLITE_OK) {
    return refuse(vm, sqlite3_errmsg(db_));
  }
  for (int i = 0; i < STATEMENT_COUNT; i++) {
    if (sqlite3_prepare_v3(db_, STATEMENT_TEXT[i], -1, SQLITE_PREPARE_PERSISTENT, &statements_[i],
                           nullptr) != SQLITE_OK) {
      return refuse(vm, sqlite3_errmsg(db_));
    }
  }
  return true;
}

// Reads what the file is before anything is written to it: a registry store
// of a known version, a new empty database (made one), or something else.
bool Store::prepareSchema(VMEngine* vm) {
  sqlite3_stmt* probe = nullptr;
  if (sqlite3_prepare_v2(db_,
                         "SELECT (SELECT application_id FROM pragma_application_id),"
                         " (SELECT user_version FROM pragma_user_version),"
                         " (SELECT count(*) FROM sqlite_master)",
                         -1, &probe, nullptr) != SQLITE_OK) {
    std::string why = sqlite3_errmsg(db_);
    sqlite3_finalize(probe);
    return refuse(vm,
                  "damaged or not a registry database (" + why + "); the file is left as it is");
  }
  int step = sqlite3_step(probe);
  int64_t application = sqlite3_column_int64(probe, 0);
  int64_t version = sqlite3_column_int64(probe, 1);
  int64_t objects = sqlite3_column_int64(probe, 2);
  std::string why = sqlite3_errmsg(db_);
  sqlite3_finalize(probe);
  if (step != SQLITE_ROW) {
    return refuse(vm,
                  "damaged or not a registry database (" + why + "); the file is left as it is");
  }
  if (application == STORE_APPLICATION_ID) {
    if (version > STORE_SCHEMA_VERSION) return refuse(vm, "written by a newer version");
    return true;
  }
  if (application != 0 || objects != 0) {
    return refuse(vm, "a database of another program; the file is left as it is");
  }
  // Another process may be making the same new store at this moment: the
  // transaction decides who does, and the other finds it done.
  std::string script = std::string("BEGIN IMMEDIATE;") + SCHEMA +
                       "PRAGMA application_id = " + std::to_string(STORE_APPLICATION_ID) +
                       "; PRAGMA user_version = " + std::to_string(STORE_SCHEMA_VERSION) +
                       "; COMMIT;";
  if (sqlite3_exec(db_, script.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    std::string failed = sqlite3_errmsg(db_);
    sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
    sqlite3_stmt* again = nullptr;
    sqlite3_prepare_v2(db_, "SELECT application_id FROM pragma_application_id", -1, &again,
                       nullptr);
    bool madeByOther = again && sqlite3_step(again) == SQLITE_ROW &&
                       sqlite3_column_int64(again, 0) == STORE_APPLICATION_ID;
    sqlite3_finalize(again);
    if (!madeByOther) return refuse(vm, "cannot be made: " + failed);
  }
  return true;
}

int32_t Store::failure(VMEngine* vm, const char* action) {
  std::string text = "registry store " + path_ + ": " + action + " failed: " + sqlite3_errmsg(db_);
  kovo_report_error(vm, text.c_str());
  if (batchDepth_ > 0) batchFailed_ = true;
  return REG_ERROR_BADDB;
}

// Root keys have the fixed rows 1 to 6 (their low bits plus one).
OpenKey* Store::lookup(uint32_t key) {
  switch (key) {
    case HKEY_CLASSES_ROOT_KEY:
    case HKEY_CURRENT_USER_KEY:
    case HKEY_LOCAL_MACHINE_KEY:
    case HKEY_USERS_KEY:
    case HKEY_CURRENT_CONFIG_KEY: {
      // A root keeps its enumeration cursor, as an open key does.
      OpenKey& root = roots_[key & 7];
      if (!root.used) {
        root = OpenKey{true, static_cast<int64_t>(key & 7) + 1, REG_KEY_ALL_ACCESS, {}, {}};
      }
      return &root;
    }
    default:
      if (key == 0 || key > handles_.size() || !handles_[key - 1].used) return nullptr;
      return &handles_[key - 1];
  }
}

uint32_t Store::addHandle(int64_t id, uint32_t access) {
  uint32_t handle;
  if (!freeHandles_.empty()) {
    handle = freeHandles_.back();
    freeHandles_.pop_back();
  } else {
    handles_.emplace_back();
    handle = static_cast<uint32_t>(handles_.size());
  }
  handles_[handle - 1] = OpenKey{true, id, access, {}, {}};
  return handle;
}

bool Store::removeHandle(uint32_t key) {
  if (key == 0 || key > handles_.size() || !handles_[key - 1].used) return false;
  handles_[key - 1] = OpenKey{};
  freeHandles_.push_back(key);
  return true;
}

template <typename Work>
int32_t Store::write(VMEngine* vm, Work work) {
  if (batchDepth_ > 0) return work();
  if (Row(statement(BEGIN)).step() != SQLITE_DONE) return failure(vm, "begin");
  int32_t result = work();
  if (result == REG_OK) {
    if (Row(statement(COMMIT)).step() == SQLITE_DONE) return REG_OK;
    result = failure(vm, "commit");
  }
  Row(statement(ROLLBACK)).step();
  return result;
}

int32_t Store::batch(VMEngine* vm, int32_t (*work)(VMEngine*, void*), void* cargo) {
  if (batchDepth_ > 0) return work(vm, cargo);
  if (Row(statement(BEGIN)).step() != SQLITE_DONE) return failure(vm, "begin");
  batchDepth_ = 1;
  batchFailed_ = false;
  int32_t result = work(vm, cargo);
  bool failed = batchFailed_;
  batchDepth_ = 0;
  if (db_ && result == 0 && !failed) {
    if (Row(statement(COMMIT)).step() == SQLITE_DONE) return 0;
    result = failure(vm, "commit");
  }
  if (db_) Row(statement(ROLLBACK)).step();
  return result != 0 ? result : REG_ERROR_BADDB;
}

// Win32 limits a key name's level to 255 characters.
constexpr size_t MAX_KEY_LEVEL = 255;

int32_t Store::walk(VMEngine* vm, int64_t from, const char* subKey, bool create,
                    const std::string& className, int64_t* found, bool* created) {
  int64_t id = from;
  bool made = false;
  const char* level = subKey;
  // A trailing backslash names the same key; empty levels elsewhere are no names.
  size_t total = std::strlen(subKey);
  if (total > 0 && subKey[total - 1] == '\\') total--;
  const char* end = subKey + total;
  if (create && id > 6) {
    Row exists(statement(KEY_EXISTS));
    int step = exists.bind(1, id).step();
    if (step == SQLITE_DONE) return REG_ERROR_KEY_DELETED;
    if (step != SQLITE_ROW) return failure(vm, "reading a key");
  }
  while (level < end) {
    const char* stop = static_cast<const char*>(std::memchr(level, '\\', end - level));
    if (!stop) stop = end;
    size_t length = static_cast<size_t>(stop - level);
    if (length == 0) return create ? REG_ERROR_BAD_PATHNAME : REG_ERROR_FILE_NOT_FOUND;
    if (length > MAX_KEY_LEVEL) return REG_ERROR_INVALID_PARAMETER;
    std::string fold = folded(level, length);
    Row find(statement(FIND_KEY));
    int step = find.bind(1, id).bind(2, fold).step();
    if (step == SQLITE_ROW) {
      id = find.integer(0);
      made = false;
    } else if (step != SQLITE_DONE) {
      return failure(vm, "reading a key");
    } else if (!create) {
      return REG_ERROR_FILE_NOT_FOUND;
    } else {
      std::string name(level, length);
      Row insert(statement(INSERT_KEY));
      insert.bind(1, id).bind(2, name).bind(3, fold);
      // Only the last level gets the class; the bytes must outlive the step.
      static const std::string noClass;
      insert.bind(4, stop == end ? className : noClass);
      if (insert.step() != SQLITE_DONE) return failure(vm, "making a key");
      id = sqlite3_last_insert_rowid(sqlite3_db_handle(statement(INSERT_KEY)));
      made = true;
    }
    level = stop + 1;
  }
  *found = id;
  if (created) *created = made;
  return REG_OK;
}

// The shape of every operation: the store is ready, the key is known.
template <typename Work>
int32_t withKey(VMEngine* vm, uint32_t key, Work work, bool keepLastQuery = false) {
  Store& store = theStore();
  std::lock_guard<std::recursive_mutex> lock(store.mutex);
  if (!keepLastQuery) store.lastQuery.valid = false;
  if (!store.ready(vm)) return REG_ERROR_BADDB;
  OpenKey* open = store.lookup(key);
  if (!open) return REG_ERROR_INVALID_HANDLE;
  return work(store, *open);
}

const char* orEmpty(const char* text) {
  return text ? text : "";
}

// Copies a name into a caller's buffer of *length bytes (zero included);
// *length becomes the name's length.
int32_t copyName(const char* name, uint32_t size, char* buffer, uint32_t* length) {
  if (!buffer || size >= *length) {
    *length = size;
    return REG_ERROR_MORE_DATA;
  }
  std::memcpy(buffer, name, size);
  buffer[size] = '\0';
  *length = size;
  return REG_OK;
}

// Steps to the row at `index` below `parent` (from the cursor when it stands
// just before) and hands it to `use`.
template <typename Use>
int32_t enumerate(VMEngine* vm, Store& store, EnumCursor& cursor, int64_t parent, uint32_t index,
                  Statement at, Statement after, int foldColumn, const char* action, Use use) {
  bool next = cursor.valid && index == cursor.index + 1;
  Row row(store.statement(next ? after : at));
  row.bind(1, parent);
  if (next) {
    row.bind(2, cursor.fold);
  } else {
    row.bind(2, static_cast<int64_t>(index));
  }
  int step = row.step();
  if (step == SQLITE_DONE) return REG_ERROR_NO_MORE_ITEMS;
  if (step != SQLITE_ROW) return store.failure(vm, action);
  cursor = EnumCursor{true, index, std::string(row.bytes(foldColumn), row.size(foldColumn))};
  return use(row);
}

}  // namespace

int32_t osRegOpenKey(VMEngine* vm, uint32_t key, const char* subKey, uint32_t access,
                     uint32_t* opened) {
  return withKey(vm, key, [&](Store& store, OpenKey& from) {
    int64_t id;
    int32_t result = store.walk(vm, from.id, orEmpty(subKey), false, "", &id, nullptr);
    if (result == REG_OK) *opened = store.addHandle(id, access);
    return result;
  });
}

int32_t osRegCreateKey(VMEngine* vm, uint32_t key, const char* subKey, uint32_t* opened) {
  // An empty name gives back the very handle passed in, as Windows does.
  if (!subKey || !*subKey) {
    return withKey(vm, key, [&](Store&, OpenKey&) {
      *opened = key;
      return REG_OK;
    });
  }
  uint32_t disposition;
  return osRegCreateKeyEx(vm, key, subKey, "", 0, REG_KEY_ALL_ACCESS, nullptr, opened,
                          &disposition);
}

int32_t osRegCreateKeyEx(VMEngine* vm, uint32_t key, const char* subKey, const char* className,
                         uint32_t, uint32_t access, const void*, uint32_t* opened,
                         uint32_t* disposition) {
  return withKey(vm, key, [&](Store& store, OpenKey& from) {
    int64_t id;
    bool created = false;
    int32_t result = store.write(vm, [&] {
      int32_t found = store.walk(vm, from.id, orEmpty(subKey), false, "", &id, nullptr);
      if (found != REG_ERROR_FILE_NOT_FOUND) return found;
      if (!(from.access & REG_KEY_CREATE_SUB_KEY)) return REG_ERROR_ACCESS_DENIED;
      return store.walk(vm, from.id, orEmpty(subKey), true, orEmpty(className), &id, &created);
    });
    if (result != REG_OK) return result;
    *opened = store.addHandle(id, access);
    *disposition = created ? 1 : 2;
    return REG_OK;
  });
}

int32_t osRegQueryValue(VMEngine* vm, uint32_t key, const char* name, uint32_t* type,
                        unsigned char* data, uint32_t* size) {
  return withKey(
      vm, key,
      [&](Store& store, OpenKey& open) {
        if (!(open.access & REG_KEY_QUERY_VALUE)) return REG_ERROR_ACCESS_DENIED;
        const char* text = orEmpty(name);
        LastQuery& last = store.lastQuery;
        std::string fold = folded(text, std::strlen(text));
        if (!(data && last.valid && last.key == key && last.fold == fold)) {
          Row row(store.statement(QUERY_VALUE));
          int step = row.bind(1, open.id).bind(2, fold).step();
          last.valid = false;
          if (step == SQLITE_DONE) return REG_ERROR_FILE_NOT_FOUND;
          if (step != SQLITE_ROW) return store.failure(vm, "reading a value");
          last.type = static_cast<uint32_t>(row.integer(0));
          last.data.assign(row.bytes(1), row.size(1));
          last.key = key;
          last.fold = std::move(fold);
        }
        // Kept for the call that fetches the bytes, and only for it.
        last.valid = !data;
        *type = last.type;
        auto stored = static_cast<uint32_t>(last.data.size());
        bool fits = data && stored <= *size;
        *size = stored;
        if (!data) return REG_OK;
        if (!fits) return REG_ERROR_MORE_DATA;
        std::memcpy(data, last.data.data(), stored);
        return REG_OK;
      },
      true);
}

int32_t osRegSetValue(VMEngine* vm, uint32_t key, const char* name, uint32_t type,
                      const unsigned char* data, uint32_t size) {
  return withKey(vm, key, [&](Store& store, OpenKey& open) {
    if (!(open.access & REG_KEY_SET_VALUE)) return REG_ERROR_ACCESS_DENIED;
    uint32_t kept = size;
    // Text that lacks its closing zero, when one follows it, is kept with it,
    // as Windows keeps string values.
    bool text = type == REG_TYPE_SZ || type == REG_TYPE_EXPAND_SZ || type == REG_TYPE_MULTI_SZ;
    if (text && kept > 0 && data[kept - 1] != 0 && data[kept] == 0) kept++;
    const char* valueName = orEmpty(name);
    std::string fold = folded(valueName, std::strlen(valueName));
    Row row(store.statement(SET_VALUE));
    row.bind(1, open.id).bind(2, fold).bind(3, valueName, std::strlen(valueName));
    row.bind(4, type).bind(5, data, kept);
    if (row.step() != SQLITE_DONE) return store.failure(vm, "writing a value");
    if (sqlite3_changes(sqlite3_db_handle(store.statement(SET_VALUE))) == 0) {
      return REG_ERROR_KEY_DELETED;
    }
    return REG_OK;
  });
}

int32_t osRegEnumKey(VMEngine* vm, uint32_t key, uint32_t index, char* name, uint32_t* nameLength,
                     char* className, uint32_t* classLength) {
  return withKey(vm, key, [&](Store& store, OpenKey& open) {
    if (!(open.access & REG_KEY_ENUMERATE_SUB_KEYS)) return REG_ERROR_ACCESS_DENIED;
    return enumerate(vm, store, open.keys, open.id, index, KEY_AT, KEY_AFTER, 2, "listing keys",
                     [&](Row& row) {
                       int32_t result = copyName(row.bytes(0), row.size(0), name, nameLength);
                       if (result != REG_OK || !classLength) return result;
                       return copyName(row.bytes(1), row.size(1), className, classLength);
                     });
  });
}

int32_t osRegEnumValue(VMEngine* vm, uint32_t key, uint32_t index, char* name, uint32_t* nameLength,
                       uint32_t* type, unsigned char* data, uint32_t* size) {
  return withKey(vm, key, [&](Store& store, OpenKey& open) {
    if (!(open.access & REG_KEY_QUERY_VALUE)) return REG_ERROR_ACCESS_DENIED;
    return enumerate(vm, store, open.values, open.id, index, VALUE_AT, VALUE_AFTER, 3,
                     "listing values", [&](Row& row) {
                       int32_t result = copyName(row.bytes(0), row.size(0), name, nameLength);
                       if (result != REG_OK) return result;
                       *type = static_cast<uint32_t>(row.integer(1));
                       uint32_t stored = row.size(2);
                       bool fits = data && stored <= *size;
                       *size = stored;
                       if (!data) return REG_OK;
                       if (!fits) return REG_ERROR_MORE_DATA;
                       std::memcpy(data, row.bytes(2), stored);
                       return REG_OK;
                     });
  });
}

int32_t osRegDeleteKey(VMEngine* vm, uint32_t key, const char* subKey) {
  return withKey(vm, key, [&](Store& store, OpenKey& from) {
    return store.write(vm, [&] {
      int64_t id;
      int32_t found = store.walk(vm, from.id, orEmpty(subKey), false, "", &id, nullptr);
      if (found != REG_OK) return found;
      // A root key is no key to delete, nor one that still has sub-keys.
      if (id <= 6) return REG_ERROR_ACCESS_DENIED;
      Row children(store.statement(HAS_SUBKEY));
      int step = children.bind(1, id).step();
      if (step == SQLITE_ROW) return REG_ERROR_ACCESS_DENIED;
      if (step != SQLITE_DONE) return store.failure(vm, "reading a key");
      if (Row(store.statement(DELETE_VALUES)).bind(1, id).step() != SQLITE_DONE ||
          Row(store.statement(DELETE_KEY)).bind(1, id).step() != SQLITE_DONE) {
        return store.failure(vm, "deleting a key");
      }
      return REG_OK;
    });
  });
}

int32_t osRegDeleteValue(VMEngine* vm, uint32_t key, const char* name) {
  return withKey(vm, key, [&](Store& store, OpenKey& open) {
    if (!(open.access & REG_KEY_SET_VALUE)) return REG_ERROR_ACCESS_DENIED;
    const char* valueName = orEmpty(name);
    Row row(store.statement(DELETE_VALUE));
    if (row.bind(1, open.id).bind(2, folded(valueName, std::strlen(valueName))).step() !=
        SQLITE_DONE) {
      return store.failure(vm, "deleting a value");
    }
    if (sqlite3_changes(sqlite3_db_handle(store.statement(DELETE_VALUE))) == 0) {
      return REG_ERROR_FILE_NOT_FOUND;
    }
    return REG_OK;
  });
}

int32_t osRegCloseKey(VMEngine* vm, uint32_t key) {
  return withKey(vm, key, [&](Store& store, OpenKey&) {
    // Closing a root key is allowed and changes nothing.
    if (key >= HKEY_CLASSES_ROOT_KEY) return REG_OK;
    store.removeHandle(key);
    return REG_OK;
  });
}

int32_t osRegBatch(VMEngine* vm, int32_t (*work)(VMEngine* vm, void* cargo), void* cargo) {
  Store& store = theStore();
  std::lock_guard<std::recursive_mutex> lock(store.mutex);
  if (!store.ready(vm)) return REG_ERROR_BADDB;
  return store.batch(vm, work, cargo);
}
