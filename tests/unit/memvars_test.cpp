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
  EXPECT_EQ(memvarScope(vm, "pub"), MV_PUBLIC);
  EXPECT_EQ(memvarScope(vm, "PRIV"), MV_PRIVATE);
  EXPECT_EQ(memvarScope(vm, "nothing"), MV_UNKNOWN);
  EXPECT_EQ(memvarCount(vm, MV_PUBLIC), 1);
  EXPECT_EQ(memvarCount(vm, MV_PRIVATE), 1);
}

TEST_F(MemvarTest, PrivateHidesAndRestoreUncoversTheOuterVariable) {
  memvarCreateFromItem(vm, str("X"), MV_PUBLIC, num(1));
  uint32_t mark = memvarPrivateMark(vm);
  memvarCreateFromItem(vm, str("X"), MV_PRIVATE, num(2));
  EXPECT_EQ(valueOf("X"), "2");
  memvarSetValue(vm, memvarFindSymbol(vm, "X"), num(3));
  memvarPrivateRestore(vm, mark);
  EXPECT_EQ(valueOf("X"), "1");
  EXPECT_EQ(memvarScope(vm, "X"), MV_PUBLIC);
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
  Item* value = memvarDebugVariable(vm, MV_PUBLIC, 2, &name);
  ASSERT_NE(value, nullptr);
  EXPECT_STREQ(name, "P2");
  EXPECT_EQ(memvarDebugVariable(vm, MV_PUBLIC, 3, &name), nullptr);
}

}  // namespace
