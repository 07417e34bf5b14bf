// Item lifetimes, references, shared arrays and hashes, text forms.
#include <cstring>

#include "vm_fixture.h"

namespace {

TEST_F(VmTest, CopiedStringsShareOneBufferUntilTheLastHolderGoes) {
  Item* original = str("shared text");
  Item* copy = nil();
  itemCopy(vm, copy, original);
  EXPECT_EQ(itemStrPtr(copy), itemStrPtr(original));
  size_t live = vmHeapLiveBlocks(vm);
  itemClear(vm, original);
  EXPECT_EQ(vmHeapLiveBlocks(vm), live);
  EXPECT_EQ(text(copy), "shared text");
  itemClear(vm, copy);
  EXPECT_EQ(vmHeapLiveBlocks(vm), live - 1);
}

TEST_F(VmTest, StringsKeepTheirBytesAndATrailingZero) {
  Item* bytes = str(std::string("a\0b", 3));
  EXPECT_EQ(itemStrLen(bytes), 3u);
  EXPECT_EQ(itemStrPtr(bytes)[3], '\0');
  Item* memo = itemPutCLM(vm, nil(), "m", 1, 1);
  EXPECT_EQ(memo->type, HB_IT_MEMO);
}

TEST_F(VmTest, AdoptedBuffersBelongToTheItem) {
  auto* buffer = static_cast<char*>(vmAlloc(vm, 4));
  std::memcpy(buffer, "abc", 3);
  Item* adopted = itemPutCPtr(vm, nil(), buffer, 3);
  EXPECT_EQ(itemStrPtr(adopted), buffer);
  EXPECT_EQ(text(adopted), "abc");
}

TEST_F(VmTest, WritableTextIsUnsharedFirst) {
  Item* original = str("abc");
  Item* copy = nil();
  itemCopy(vm, copy, original);
  uint32_t length = 0;
  char* writable = itemGetWriteCL(vm, copy, &length);
  writable[0] = 'X';
  EXPECT_EQ(text(original), "abc");
  EXPECT_EQ(text(copy), "Xbc");
  Item* constant = itemPutCStatic(vm, nil(), "const");
  itemGetWriteCL(vm, constant, &length)[0] = 'C';
  EXPECT_EQ(text(constant), "Const");
}

TEST_F(VmTest, ArraysAreSharedByReference) {
  Item* first = array({num(1), num(2)});
  Item* second = nil();
  itemCopy(vm, second, first);
  arraySet(vm, second, 1, str("changed"));
  EXPECT_EQ(text(arrayGetItemPtr(first, 1)), "changed");
  Item* clone = arrayClone(vm, first);
  arraySet(vm, clone, 2, num(99));
  EXPECT_EQ(arrayGetNI(first, 2), 2);
  xItemRelease(vm, clone);
}

TEST_F(VmTest, ArrayOperationsCheckTheirBounds) {
  Item* list = array({num(1), num(2), num(3)});
  EXPECT_FALSE(arraySet(vm, list, 0, num(9)));
  EXPECT_FALSE(arraySet(vm, list, 4, num(9)));
  EXPECT_EQ(arrayGetItemPtr(list, 4), nullptr);
  arrayIns(vm, list, 2);
  EXPECT_EQ(arrayGetItemPtr(list, 2)->type, HB_IT_NIL);
  EXPECT_EQ(arrayGetNI(list, 3), 2);
  EXPECT_EQ(itemArrayLen(list), 3u);
  arrayAdd(vm, list, str("end"));
  EXPECT_EQ(itemArrayLen(list), 4u);
  EXPECT_EQ(text(arrayGetItemPtr(list, 4)), "end");
}

TEST_F(VmTest, DeeplyNestedArraysAreReleasedWithoutRecursion) {
  Item* outer = nil();
  arrayNew(vm, outer, 0);
  Item* innermost = nil();
  itemCopy(vm, innermost, outer);
  for (int depth = 0; depth < 1000000; depth++) {
    Item* next = itemArrayNew(vm, 0);
    arrayAdd(vm, innermost, next);
    itemCopy(vm, innermost, arrayGetItemPtr(innermost, 1));
    xItemRelease(vm, next);
  }
  itemClear(vm, innermost);
  itemClear(vm, outer);
}

TEST_F(VmTest, HashesKeepInsertionOrderAndReplaceEqualKeys) {
  Item* hash = nil();
  hashNew(vm, hash);
  hashAddForward(vm, hash, UINT32_MAX, str("b"), num(1));
  hashAddForward(vm, hash, UINT32_MAX, str("a"), num(2));
  hashAddForward(vm, hash, UINT32_MAX, str("b"), num(3));
  ASSERT_EQ(hashLen(hash), 2u);
  EXPECT_EQ(text(hashGetKeyAt(hash, 1)), "b");
  EXPECT_EQ(itemGetNI(hashGetValueAt(hash, 1)), 3);
  EXPECT_EQ(itemGetNI(hashGetItemPtr(hash, str("a"))), 2);
  EXPECT_EQ(hashGetItemPtr(hash, num(1)), nullptr);
  Item* alias = nil();
  itemCopy(vm, alias, hash);
  hashAddForward(vm, alias, UINT32_MAX, num(5), num(6));
  EXPECT_EQ(hashLen(hash), 3u);
}

TEST_F(VmTest, ReferencesReachTheVariableAndStoresGoThroughThem) {
  Item* variable = ref(str("old"));
  Item* reference = nil();
  itemCopy(vm, reference, variable);
  EXPECT_EQ(text(itemUnRef(vm, reference)), "old");
  auto store = [](VMEngine* vm) {
    hb_storc(vm, "new", 1);
    hb_stornl(vm, 7, 2);  // not a reference: nothing happens
  };
  Item* plain = num(1);
  call(store, {reference, plain});
  EXPECT_EQ(text(target(variable)), "new");
  EXPECT_EQ(itemGetNI(plain), 1);
}

TEST_F(VmTest, ReferenceToReferenceResolvesOneLevelAtATime) {
  Item* inner = ref(num(4));
  Item* outer = ref(inner);
  Item* once = itemUnRefOnce(vm, outer);
  EXPECT_EQ(once->type, HB_IT_BYREF);
  EXPECT_EQ(itemGetNI(itemUnRef(vm, outer)), 4);
}

TEST_F(VmTest, NumbersCarryWidthAndDecimals) {
  Item* value = dbl(1.5);
  int width = 0;
  int decimals = 0;
  itemGetNLen(value, &width, &decimals);
  EXPECT_EQ(width, 10);
  EXPECT_EQ(decimals, 2);  // SET DECIMALS starts at 2
  vm->set.value[HB_SET_DECIMALS] = 4;
  itemGetNLen(dbl(1.5), &width, &decimals);
  EXPECT_EQ(decimals, 4);
  EXPECT_EQ(itemPutNInt(vm, nil(), 5)->type, HB_IT_INTEGER);
  EXPECT_EQ(itemPutNInt(vm, nil(), 5000000000LL)->type, HB_IT_DOUBLE);
}

TEST_F(VmTest, StrTextFollowsWidthAndDecimals) {
  auto strOf = [&](Item* number, Item* width, Item* decimals) {
    char* buffer = itemStr(vm, number, width, decimals);
    std::string result = buffer ? buffer : "(none)";
    vmFree(vm, buffer);
    return result;
  };
  EXPECT_EQ(strOf(num(5), nullptr, nullptr), "         5");
  EXPECT_EQ(strOf(itemPutNDLen(vm, nil(), 3.14159, 1, 2), nullptr, nullptr), "3.14");
  EXPECT_EQ(strOf(dbl(2.675), num(6), num(2)), "  2.68");
  EXPECT_EQ(strOf(num(123456), num(3), nullptr), "***");
  EXPECT_EQ(strOf(str("x"), nullptr, nullptr), "(none)");
}

TEST_F(VmTest, TypeLetters) {
  EXPECT_STREQ(itemTypeStr(nullptr), "U");
  EXPECT_STREQ(itemTypeStr(num(1)), "N");
  EXPECT_STREQ(itemTypeStr(str("a")), "C");
  EXPECT_STREQ(itemTypeStr(itemPutCLM(vm, nil(), "a", 1, 1)), "M");
  EXPECT_STREQ(itemTypeStr(date("20240101")), "D");
  EXPECT_STREQ(itemTypeStr(logical(true)), "L");
  EXPECT_STREQ(itemTypeStr(array({})), "A");
  EXPECT_STREQ(itemTypeStr(ref(str("a"))), "C");
  Item* error = errNew(vm);
  EXPECT_STREQ(itemTypeStr(error), "O");
  xItemRelease(vm, error);
}

TEST_F(VmTest, DatesAreJulianDayNumbers) {
  EXPECT_EQ(dateEncode(1899, 12, 30), 2415019);
  EXPECT_EQ(dateEncStr("20240229"), dateEncode(2024, 2, 29));
  EXPECT_EQ(dateEncStr("20230229"), 0);
  EXPECT_EQ(dateEncStr("        "), 0);
  char text[9];
  EXPECT_STREQ(dateDecStr(text, dateEncode(2024, 1, 31)), "20240131");
  EXPECT_STREQ(dateDecStr(text, 0), "        ");
  char formatted[16];
  EXPECT_STREQ(dateFormat(formatted, "20240131", "dd.mm.yyyy"), "31.01.2024");
  EXPECT_STREQ(dateFormat(formatted, "        ", "mm/dd/yy"), "  /  /  ");
}

TEST_F(VmTest, CodePageAndLanguage) {
  char upper[4];
  strUpperCopy(vm, upper, "a\xE0\xB8", 3);  // a, Cyrillic a, yo
  EXPECT_EQ(std::string(upper, 3), "A\xC0\xA8");
  EXPECT_STREQ(langDGetItem(vm, LANG_ITEM_YESNO), "Y,N");
  EXPECT_STREQ(langSelectID(vm, "RU"), "EN");
  EXPECT_STREQ(langDGetItem(vm, LANG_ITEM_YESNO), "\xC4,\xCD");
  EXPECT_EQ(langSelectID(vm, "XX"), nullptr);
  EXPECT_STREQ(langID(vm), "RU");
}

}  // namespace
