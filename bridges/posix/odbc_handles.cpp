// ODBC handles are pointers here, wider than the 32-bit numbers programs
// carry, so programs get small positive numbers from one table for the
// process. A number is never handed out again while it is live, and numbers
// run on rather than being reused at once, so a stale number finds nothing
// instead of somebody else's handle.
#include <cstdint>
#include <mutex>
#include <unordered_map>

#include "bridges/odbc_api.h"

namespace {

struct Entry {
  SQLHANDLE handle;
  OdbcKind kind;
  int32_t owner;
};

class HandleTable {
 public:
  SQLHANDLE find(int32_t number, OdbcKind kind) {
    std::lock_guard<std::mutex> guard(lock_);
    auto found = entries_.find(number);
    if (found == entries_.end() || found->second.kind != kind) return nullptr;
    return found->second.handle;
  }

  int32_t add(SQLHANDLE handle, OdbcKind kind, int32_t owner) {
    std::lock_guard<std::mutex> guard(lock_);
    while (entries_.count(next_))
      advance();
    int32_t number = next_;
    advance();
    entries_.emplace(number, Entry{handle, kind, owner});
    return number;
  }

  void forget(int32_t number) {
    std::lock_guard<std::mutex> guard(lock_);
    auto found = entries_.find(number);
    if (found == entries_.end()) return;
    bool connection = found->second.kind == OdbcKind::connection;
    entries_.erase(found);
    if (connection) forgetStatementsLocked(number);
  }

  void forgetStatements(int32_t connection) {
    std::lock_guard<std::mutex> guard(lock_);
    forgetStatementsLocked(connection);
  }

 private:
  void advance() { next_ = next_ == INT32_MAX ? 1 : next_ + 1; }

  void forgetStatementsLocked(int32_t connection) {
    std::erase_if(entries_, [connection](const auto& entry) {
      return entry.second.kind == OdbcKind::statement && entry.second.owner == connection;
    });
  }

  std::mutex lock_;
  std::unordered_map<int32_t, Entry> entries_;
  int32_t next_ = 1;
};

HandleTable& table() {
  static HandleTable handles;
  return handles;
}

}  // namespace

SQLHANDLE odbcHandleFind(int32_t number, OdbcKind kind) {
  if (number <= 0) return nullptr;
  return table().find(number, kind);
}

int32_t odbcHandleAdd(SQLHANDLE handle, OdbcKind kind, int32_t owner) {
  return table().add(handle, kind, owner);
}

void odbcHandleForget(int32_t number) {
  table().forget(number);
}

void odbcHandleForgetStatements(int32_t connection) {
  table().forgetStatements(connection);
}
