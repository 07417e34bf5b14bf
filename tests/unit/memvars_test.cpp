// Memory variables: scopes, hiding, release, clear and count.
#include <regex.h>

#include "vm_fixture.h"

namespace {

class MemvarTest : public VmTest {
 protected:
  std::string valueOf(const char* name) {
    DynSymbol* symbol = memvarFindSymbol(vm, name);
    if (!symbol) return "(none)";
    Item value{};
    memvarGetValue(vm, &value, symbol);
    std::string shown = value.type == HB_IT_NIL ? "NIL" : std::to_string(itemGetNI(&value));
    itemClear(vm, &value);
    return shown;
  }
};

TEST_F(MemvarTest, PublicStartsFalseAndPrivateNil) {
  memvarCreateFromItem(vm, str("pub"), MV_PUBLIC, nullptr);
  memvarCreateFromItem(vm, str("priv"), MV_PRIVATE, nullptr);
  Item value{};
  memvarGetValue(vm, &value, memvarFindSymbol(vm, "PUB"));
  EXPECT_EQ(value.type, HB_IT_LOGICAL);
  EXPECT_EQ(valueOf("priv"), "NIL");
  EXPECT_EQ(memvarScope(vm, "pub"), MV_DBG_PUBLIC);
  EXPECT_EQ(memvarScope(vm, "PRIV"), MV_DBG_PRIVATE_OWN);
  EXPECT_EQ(memvarScope(vm, "nothing"), MV_DBG_NO_SYMBOL);
  EXPECT_EQ(memvarCount(vm, MV_DBG_PUBLIC), 1);
  EXPECT_EQ(memvarCount(vm, MV_DBG_PRIVATE), 1);
}

TEST_F(MemvarTest, PrivateHidesAndRestoreUncoversTheOuterVariable) {
  memvarCreateFromItem(vm, str("X"), MV_PUBLIC, num(1));
  uint32_t mark = memvarPrivateMark(vm);
  memvarCreateFromItem(vm, str("X"), MV_PRIVATE, num(2));
  EXPECT_EQ(valueOf("X"), "2");
  memvarSetValue(vm, memvarFindSymbol(vm, "X"), num(3));
  memvarPrivateRestore(vm, mark);
  EXPECT_EQ(valueOf("X"), "1");
  EXPECT_EQ(memvarScope(vm, "X"), MV_DBG_PUBLIC);
}

TEST_F(MemvarTest, ReleaseSetsNilAndClearRemoves) {
  memvarCreateFromItem(vm, str("A"), MV_PRIVATE, num(1));
  memvarRelease(vm, str("A"));
  EXPECT_EQ(valueOf("A"), "NIL");
  memvarClear(vm, xdynsymFind(vm, "A"));
  EXPECT_EQ(valueOf("A"), "(none)");
}

TEST_F(MemvarTest, ReleaseByMaskTouchesMatchingPrivatesOnly) {
  memvarCreateFromItem(vm, str("ABC"), MV_PRIVATE, num(1));
  memvarCreateFromItem(vm, str("ABD"), MV_PRIVATE, num(2));
  memvarCreateFromItem(vm, str("XYZ"), MV_PRIVATE, num(3));
  memvarCreateFromItem(vm, str("ABP"), MV_PUBLIC, num(4));
  regex_t expression;
  ASSERT_EQ(regcomp(&expression, "^AB", 0), 0);
  memvarReleaseWithMask(vm, &expression, true);
  EXPECT_EQ(valueOf("ABC"), "NIL");
  EXPECT_EQ(valueOf("ABD"), "NIL");
  EXPECT_EQ(valueOf("XYZ"), "3");
  EXPECT_EQ(valueOf("ABP"), "4");
  memvarReleaseWithMask(vm, &expression, false);
  EXPECT_EQ(valueOf("XYZ"), "NIL");
  regfree(&expression);
}

TEST_F(MemvarTest, ReferencesKeepTheVariableAliveAfterItIsCleared) {
  memvarCreateFromItem(vm, str("V"), MV_PRIVATE, num(5));
  Item* reference = nil();
  itemPutRef(vm, reference, memvarGetCell(vm, memvarFindSymbol(vm, "V")));
  memvarClear(vm, xdynsymFind(vm, "V"));
  EXPECT_EQ(itemGetNI(itemUnRef(vm, reference)), 5);
}

TEST_F(MemvarTest, DebugViewWalksAScope) {
  memvarCreateFromItem(vm, str("P1"), MV_PUBLIC, num(1));
  memvarCreateFromItem(vm, str("P2"), MV_PUBLIC, num(2));
  const char* name = nullptr;
  Item* value = memvarDebugVariable(vm, MV_DBG_PUBLIC, 2, &name);
  ASSERT_NE(value, nullptr);
  EXPECT_STREQ(name, "P2");
  EXPECT_EQ(memvarDebugVariable(vm, MV_DBG_PUBLIC, 3, &name), nullptr);
}

}  // namespace

namespace {

// The debugger's numbers: privates of the running procedure against those of
// its callers, and positions in creation order, hidden privates included.
TEST_F(MemvarTest, ScopesTellTheRunningProcedureFromItsCallers) {
  memvarCreateFromItem(vm, str("OUTER"), MV_PRIVATE, num(1));
  memvarCreateFromItem(vm, str("SHARED"), MV_PRIVATE, num(2));
  memvarCreateFromItem(vm, str("PUB"), MV_PUBLIC, num(3));
  xdynsymGet(vm, "NOVAR");
  uint32_t mark = memvarPrivateMark(vm);
  memvarCreateFromItem(vm, str("SHARED"), MV_PRIVATE, num(4));
  memvarCreateFromItem(vm, str("INNER"), MV_PRIVATE, num(5));
  struct {
    const char* name;
    int32_t scope;
  } scopes[] = {{"OUTER", MV_DBG_PRIVATE_CALLER}, {"shared", MV_DBG_PRIVATE_OWN},
                {"INNER", MV_DBG_PRIVATE_OWN},    {"PUB", MV_DBG_PUBLIC},
                {"NOVAR", MV_DBG_NO_VARIABLE},    {"UNSEEN", MV_DBG_NO_SYMBOL}};
  for (const auto& expected : scopes)
    EXPECT_EQ(memvarScope(vm, expected.name), expected.scope) << expected.name;

  struct {
    int32_t scope;
    int32_t pos;
    const char* name;  // null: out of range
    int32_t value;
  } positions[] = {{MV_DBG_PRIVATE, 1, "OUTER", 1},
                   {MV_DBG_PRIVATE, 2, "SHARED", 2},
                   {MV_DBG_PRIVATE, 3, "SHARED", 4},
                   {MV_DBG_PRIVATE, 4, "INNER", 5},
                   {MV_DBG_PRIVATE, 5, nullptr, 0},
                   {MV_DBG_PRIVATE_CALLER, 2, "SHARED", 2},
                   {MV_DBG_PRIVATE_CALLER, 3, nullptr, 0},
                   {MV_DBG_PRIVATE_OWN, 1, "SHARED", 4},
                   {MV_DBG_PUBLIC, 1, "PUB", 3},
                   {MV_DBG_PUBLIC, 0, nullptr, 0},
                   {MV_PUBLIC, 1, nullptr, 0}};
  for (const auto& expected : positions) {
    const char* name = "unset";
    Item* value = memvarDebugVariable(vm, expected.scope, expected.pos, &name);
    SCOPED_TRACE(std::to_string(expected.scope) + "/" + std::to_string(expected.pos));
    if (!expected.name) {
      EXPECT_EQ(value, nullptr);
      EXPECT_EQ(name, nullptr);
      continue;
    }
    ASSERT_NE(value, nullptr);
    EXPECT_STREQ(name, expected.name);
    EXPECT_EQ(itemGetNI(value), expected.value);
  }
  EXPECT_EQ(memvarCount(vm, MV_DBG_PRIVATE), 4);
  EXPECT_EQ(memvarCount(vm, MV_DBG_PRIVATE_CALLER), 2);
  EXPECT_EQ(memvarCount(vm, MV_DBG_PRIVATE_OWN), 2);
  EXPECT_EQ(memvarCount(vm, MV_DBG_PUBLIC), 1);
  EXPECT_EQ(memvarCount(vm, MV_DBG_UNKNOWN), 0);

  memvarPrivateRestore(vm, mark);
  EXPECT_EQ(memvarScope(vm, "OUTER"), MV_DBG_PRIVATE_OWN);
  EXPECT_EQ(valueOf("SHARED"), "2");
  EXPECT_EQ(memvarScope(vm, "INNER"), MV_DBG_NO_VARIABLE);
}

// Clearing a caller's private moves the start of the running procedure's
// privates with it, and a release by mask stays inside the running procedure.
TEST_F(MemvarTest, ClearAndMaskReleaseKeepToTheirProcedure) {
  memvarCreateFromItem(vm, str("A1"), MV_PRIVATE, num(1));
  memvarCreateFromItem(vm, str("B1"), MV_PRIVATE, num(2));
  uint32_t mark = memvarPrivateMark(vm);
  memvarCreateFromItem(vm, str("A2"), MV_PRIVATE, num(3));
  memvarClear(vm, xdynsymFind(vm, "A1"));
  EXPECT_EQ(memvarScope(vm, "B1"), MV_DBG_PRIVATE_CALLER);
  EXPECT_EQ(memvarScope(vm, "A2"), MV_DBG_PRIVATE_OWN);
  regex_t expression;
  ASSERT_EQ(regcomp(&expression, "^A", 0), 0);
  memvarReleaseWithMask(vm, &expression, false);
  EXPECT_EQ(valueOf("B1"), "2");
  memvarReleaseWithMask(vm, &expression, true);
  EXPECT_EQ(valueOf("A2"), "NIL");
  regfree(&expression);
  memvarPrivateRestore(vm, mark);
  EXPECT_EQ(memvarScope(vm, "A2"), MV_DBG_NO_VARIABLE);
  EXPECT_EQ(valueOf("B1"), "2");
}

TEST_F(MemvarTest, SymbolsAreVisitedInNameOrder) {
  for (const char* name : {"ZETA", "alpha", "Mid", "NOVAR", "A"})
    xdynsymGet(vm, name);
  for (const char* name : {"ZETA", "alpha", "Mid", "A"})
    memvarCreateFromItem(vm, str(name), MV_PRIVATE, nullptr);
  Item* names = nil();
  arrayNew(vm, names, 0);
  xdynsymEval(vm, GetSymbolInfo, names);
  std::string listed;
  for (uint32_t i = 1; i <= names->item.asArray.value->length; i++)
    listed += text(arrayGetItemPtr(names, i)) + " ";
  EXPECT_EQ(listed, "A ALPHA MID ZETA ");
}

TEST_F(MemvarTest, WildcardMasksBecomeAnchoredExpressions) {
  struct {
    const char* mask;
    bool keepCase;
    const char* expression;
    const char* matching;
    const char* other;
  } cases[] = {
      {"*", false, "^.*$", "ANY", nullptr},
      {"a*", false, "^A.*$", "ABC", "BA"},
      {"?B", false, "^.B$", "AB", "AAB"},
      {"a.b", false, "^A\\.B$", "A.B", "AXB"},
      {"[x]^$\\", false, "^\\[X]\\^\\$\\\\$", "[X]^$\\", "X"},
      {"ab", true, "^ab$", "ab", "AB"},
      {"", false, "^$", "", "A"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.mask);
    char* expression = Wild2RegEx(vm, c.mask, c.keepCase);
    EXPECT_STREQ(expression, c.expression);
    regex_t compiled;
    ASSERT_EQ(regcomp(&compiled, expression, 0), 0);
    EXPECT_EQ(regexec(&compiled, c.matching, 0, nullptr, 0), 0);
    if (c.other) {
      EXPECT_NE(regexec(&compiled, c.other, 0, nullptr, 0), 0);
    }
    regfree(&compiled);
    vmFree(vm, expression);
  }
}

}  // namespace
