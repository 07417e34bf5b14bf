// The parameter readers, cell by cell: every reader against every kind of item.
#include <cmath>
#include <functional>
#include <string>

#include "frame/frame.h"
#include "vm_fixture.h"

namespace {

std::function<void(VMEngine*)> probe;
void runProbe(VMEngine* vm) {
  probe(vm);
}

// What each reader made of parameter 1, or the text it threw.
struct Readings {
  std::string ni, nl, nd, param, pchar, xpchar, clen, ds;
};

template <typename Read>
std::string reading(Read read) {
  try {
    return read();
  } catch (const char* thrown) {
    return std::string("throws ") + thrown;
  }
}

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

class ReaderTest : public VmTest {
 protected:
  // Reads parameter `n` of a call with the given arguments with every reader.
  Readings readAll(std::initializer_list<Item*> args, int n = 1) {
    Readings r;
    probe = [&](VMEngine* vm) {
      r.ni = reading([&] { return std::to_string(paramGetNI(vm, n)); });
      r.nl = reading([&] { return std::to_string(paramGetNL(vm, n)); });
      r.nd = reading([&] { return number(paramGetND(vm, n)); });
      r.param = reading([&] { return std::to_string(param(vm, n)); });
      r.pchar = reading([&] {
        const char* text = paramPChar(vm, n);
        return text ? std::string(text) : std::string("none");
      });
      r.xpchar = reading([&] { return std::string(paramXPChar(vm, n)); });
      r.clen = reading([&] { return std::to_string(paramGetCLen(vm, n)); });
      r.ds = reading([&] { return std::string(paramGetDS(vm, n)); });
    };
    call(runProbe, args);
    return r;
  }

  void expectRow(const Readings& r, const Readings& expected) {
    EXPECT_EQ(r.ni, expected.ni);
    EXPECT_EQ(r.nl, expected.nl);
    EXPECT_EQ(r.nd, expected.nd);
    EXPECT_EQ(r.param, expected.param);
    EXPECT_EQ(r.pchar, expected.pchar);
    EXPECT_EQ(r.xpchar, expected.xpchar);
    EXPECT_EQ(r.clen, expected.clen);
    EXPECT_EQ(r.ds, expected.ds);
  }
};

const std::string BLANKS = "        ";

TEST_F(ReaderTest, IntegerAndLongItems) {
  for (Item* value : {num(7), longNum(7)}) {
    expectRow(readAll({value}), {"7", "7", "7", "1", "none", "", "0", BLANKS});
  }
  expectRow(readAll({num(0)}), {"0", "0", "0", "0", "none", "", "0", BLANKS});
}

TEST_F(ReaderTest, DoubleItemsTruncateTowardZero) {
  expectRow(readAll({dbl(3.99)}), {"3", "3", "3.99", "1", "none", "", "0", BLANKS});
  expectRow(readAll({dbl(-3.99)}), {"-3", "-3", "-3.99", "1", "none", "", "0", BLANKS});
  expectRow(readAll({dbl(0.0)}), {"0", "0", "0", "0", "none", "", "0", BLANKS});
  EXPECT_EQ(readAll({dbl(std::nan(""))}).param, "1");
}

TEST_F(ReaderTest, LogicalItems) {
  expectRow(readAll({logical(true)}), {"1", "1", "1", "1", "none", "", "0", BLANKS});
  expectRow(readAll({logical(false)}), {"0", "0", "0", "0", "none", "", "0", BLANKS});
}

TEST_F(ReaderTest, DateItemsGiveTheirDayOnlyToTheLongReader) {
  Item* day = date("20240131");
  std::string julian = std::to_string(day->item.asDate.value);
  expectRow(readAll({day}), {"0", julian, "0", "0", "none", "", "0", "20240131"});
}

TEST_F(ReaderTest, OneByteStringsReadAsTheirSignExtendedCode) {
  expectRow(readAll({str("\xE9")}), {"-23", "-23", "-23", "-23", "\xE9", "\xE9", "1", BLANKS});
  EXPECT_EQ(readAll({str("A")}).param, "65");
}

TEST_F(ReaderTest, LongerStrings) {
  expectRow(readAll({str("AB")}), {"0", "0", "0", "0", "AB", "AB", "2", BLANKS});
  expectRow(readAll({str("")}), {"0", "0", "0", "0", "", "", "0", BLANKS});
}

TEST_F(ReaderTest, ArraysThrowTheReadersMessages) {
  expectRow(
      readAll({array({num(1)})}),
      {"throws error in paramGetNI() HB_IS_ARRAY ", "throws error in paramGetNL() HB_IS_ARRAY ",
       "throws error in paramXPChar() HB_IS_ARRAY ", "throws error in param() HB_IS_ARRAY ",
       "throws error in paramPChar() HB_IS_ARRAY ", "throws error in paramXPChar() HB_IS_ARRAY ",
       "throws error in param() HB_IS_ARRAY ", "throws error in param() HB_IS_ARRAY "});
}

TEST_F(ReaderTest, MissingAndOtherItemsGiveTheDefaults) {
  const Readings defaults{"0", "0", "0", "0", "none", "", "0", BLANKS};
  expectRow(readAll({}), defaults);
  expectRow(readAll({nil()}), defaults);
  expectRow(readAll({num(1)}, 2), defaults);
  expectRow(readAll({num(1)}, -2), defaults);
  expectRow(readAll({num(1)}, 0), defaults);
}

TEST_F(ReaderTest, ReferencesAreFollowed) {
  expectRow(readAll({ref(str("AB"))}), {"0", "0", "0", "0", "AB", "AB", "2", BLANKS});
  expectRow(readAll({ref(num(9))}), {"9", "9", "9", "1", "none", "", "0", BLANKS});
}

TEST_F(ReaderTest, ExtendedFramesReadTheSameParameters) {
  extended = true;
  expectRow(readAll({num(1), str("AB")}, 2), {"0", "0", "0", "0", "AB", "AB", "2", BLANKS});
}

TEST_F(ReaderTest, MinusOneReadsTheReturnItem) {
  std::string seen;
  probe = [&](VMEngine* vm) {
    itemPutNI(vm, returnItem(vm), 42);
    seen = std::to_string(paramGetNI(vm, -1));
  };
  call(runProbe, {});
  EXPECT_EQ(seen, "42");
}

TEST_F(ReaderTest, ParamItemMasks) {
  Item* text = str("x");
  Item* byRef = ref(num(5));
  probe = [&](VMEngine* vm) {
    EXPECT_NE(paramItem(vm, 1, HB_IT_STRING), nullptr);
    EXPECT_EQ(paramItem(vm, 1, HB_IT_NUMERIC), nullptr);
    EXPECT_NE(paramItem(vm, 1, HB_IT_ANY), nullptr);
    EXPECT_NE(paramItem(vm, 1, HB_IT_NUMCOMPAT), nullptr);  // a one-byte string
    EXPECT_EQ(paramItem(vm, 1, HB_IT_BYREF), nullptr);
    Item* referred = paramItem(vm, 2, HB_IT_BYREF);
    ASSERT_NE(referred, nullptr);
    EXPECT_EQ(referred->type, HB_IT_INTEGER);
    ASSERT_NE(paramItem(vm, 3, HB_IT_ANY), nullptr);  // a nil passed is a parameter
    EXPECT_EQ(paramItem(vm, 3, HB_IT_ANY)->type, HB_IT_NIL);
    EXPECT_EQ(paramItem(vm, 4, HB_IT_NUMCOMPAT), nullptr);  // "xy" is two bytes
    EXPECT_NE(paramItem(vm, 5, HB_IT_NUMCOMPAT), nullptr);  // an exact date item
  };
  call(runProbe, {text, byRef, nil(), str("xy"), date("20240101")});
  probe = [&](VMEngine* vm) { EXPECT_EQ(paramItem(vm, 3, HB_IT_ANY), nullptr); };
  call(runProbe, {text, byRef});
}

TEST_F(ReaderTest, ParamErrorGivesTheSpareNilForMissingParameters) {
  probe = [&](VMEngine* vm) {
    itemPutNI(vm, &vm->spareNil, 3);
    Item* missing = paramError(vm, 2);
    EXPECT_EQ(missing, &vm->spareNil);
    EXPECT_EQ(missing->type, HB_IT_NIL);
    EXPECT_EQ(paramError(vm, 1)->type, HB_IT_STRING);
  };
  call(runProbe, {str("a")});
}

}  // namespace
