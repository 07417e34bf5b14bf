// The table of handle numbers on its own, without a driver manager: numbers
// stand for their handle and kind only while live, a connection takes its
// statements along, and threads sharing the table each keep their own handles.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "bridges/odbc_api.h"

namespace {

// Distinct made-up addresses; the table never looks behind them.
SQLHANDLE fakeHandle(uintptr_t n) {
  return reinterpret_cast<SQLHANDLE>(0x10000 + n * 16);
}

TEST(OdbcHandles, NumbersStandForTheirHandleAndKindWhileLive) {
  int32_t env = odbcHandleAdd(fakeHandle(1), OdbcKind::environment, 0);
  int32_t dbc = odbcHandleAdd(fakeHandle(2), OdbcKind::connection, env);
  int32_t other = odbcHandleAdd(fakeHandle(3), OdbcKind::connection, env);
  int32_t stmt = odbcHandleAdd(fakeHandle(4), OdbcKind::statement, dbc);
  int32_t stmt2 = odbcHandleAdd(fakeHandle(5), OdbcKind::statement, dbc);
  int32_t kept = odbcHandleAdd(fakeHandle(6), OdbcKind::statement, other);
  for (int32_t number : {env, dbc, other, stmt, stmt2, kept})
    EXPECT_GT(number, 0);

  struct Lookup {
    int32_t number;
    OdbcKind kind;
    SQLHANDLE expected;
  };
  const Lookup lookups[] = {
      {env, OdbcKind::environment, fakeHandle(1)},
      {dbc, OdbcKind::connection, fakeHandle(2)},
      {stmt, OdbcKind::statement, fakeHandle(4)},
      {dbc, OdbcKind::statement, nullptr},  // another kind
      {stmt, OdbcKind::connection, nullptr},
      {0, OdbcKind::environment, nullptr},  // the null handle is no number
      {-stmt, OdbcKind::statement, nullptr},
      {stmt2 + 1000000, OdbcKind::statement, nullptr},
  };
  for (const Lookup& lookup : lookups)
    EXPECT_EQ(odbcHandleFind(lookup.number, lookup.kind), lookup.expected) << lookup.number;

  // Disconnecting forgets the connection's statements, not the connection
  // nor another connection's statements; freeing it forgets it as well.
  odbcHandleForgetStatements(dbc);
  EXPECT_EQ(odbcHandleFind(stmt, OdbcKind::statement), nullptr);
  EXPECT_EQ(odbcHandleFind(stmt2, OdbcKind::statement), nullptr);
  EXPECT_EQ(odbcHandleFind(dbc, OdbcKind::connection), fakeHandle(2));
  EXPECT_EQ(odbcHandleFind(kept, OdbcKind::statement), fakeHandle(6));
  int32_t again = odbcHandleAdd(fakeHandle(7), OdbcKind::statement, other);
  odbcHandleForget(other);
  EXPECT_EQ(odbcHandleFind(other, OdbcKind::connection), nullptr);
  EXPECT_EQ(odbcHandleFind(kept, OdbcKind::statement), nullptr);
  EXPECT_EQ(odbcHandleFind(again, OdbcKind::statement), nullptr);

  // A freed number is not handed out again at once: a stale number finds nothing.
  int32_t fresh = odbcHandleAdd(fakeHandle(8), OdbcKind::statement, dbc);
  for (int32_t stale : {stmt, stmt2, kept, other, again})
    EXPECT_NE(fresh, stale);
  odbcHandleForget(fresh);
  odbcHandleForget(dbc);
  odbcHandleForget(env);
  odbcHandleForget(env);  // twice is harmless
  EXPECT_EQ(odbcHandleFind(env, OdbcKind::environment), nullptr);
}

TEST(OdbcHandles, ThreadsSharingTheTableKeepTheirOwnHandles) {
  constexpr int THREADS = 4;
  constexpr int ROUNDS = 20000;
  std::vector<int> mismatches(THREADS, 0);
  std::vector<std::thread> threads;
  for (int t = 0; t < THREADS; t++) {
    threads.emplace_back([t, &mismatches] {
      for (int round = 0; round < ROUNDS; round++) {
        SQLHANDLE handle = fakeHandle(static_cast<uintptr_t>(t) * ROUNDS + round);
        int32_t number = odbcHandleAdd(handle, OdbcKind::statement, -1 - t);
        if (odbcHandleFind(number, OdbcKind::statement) != handle) mismatches[t]++;
        if (round % 3 == 0) odbcHandleForgetStatements(-1 - t);
        odbcHandleForget(number);
        if (odbcHandleFind(number, OdbcKind::statement)) mismatches[t]++;
      }
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  for (int t = 0; t < THREADS; t++)
    EXPECT_EQ(mismatches[t], 0) << "thread " << t;
}

}  // namespace
