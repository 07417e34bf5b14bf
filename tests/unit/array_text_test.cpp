// The host's array text form and its 22-character identifier.
#include <cfloat>
#include <cmath>
#include <cstring>
#include <string>

#include "item_dump.h"
#include "kovo/host_encoding.h"
#include "vm_fixture.h"

namespace {

class ArrayTextTest : public VmTest {
 public:
  std::string toText(const Item* array) {
    uint64_t size = arrayGetStrLen(vm, array);
    std::string text(size, '\0');
    std::memcpy(text.data(), arrayStrHeader(vm), ARRAY_TEXT_HEADER_LENGTH);
    uint64_t length = ArrayToStr(vm, array, text.data(), size);
    EXPECT_EQ(length, size);
    text.resize(length);
    return text;
  }

  // The dump of the array read back, "" when the text was refused.
  std::string readBack(const std::string& text) {
    Item* result = nil();
    if (!StrToArray(vm, text.data(), static_cast<uint32_t>(text.size()), result)) {
      EXPECT_EQ(result->type, HB_IT_NIL);
      return "";
    }
    return itemDump(result);
  }

  // {{{...{}...}}} with `depth` arrays around the innermost empty one.
  Item* nested(uint32_t depth) {
    Item* root = nil();
    Item* inner = root;
    for (uint32_t i = 0; i < depth; i++) {
      arrayNew(vm, inner, 1);
      inner = arrayGetItemPtr(inner, 1);
    }
    arrayNew(vm, inner, 0);
    return root;
  }
};

TEST_F(ArrayTextTest, NestedArraysOfEveryScalarTypeComeBackAsTheyWere) {
  Item* counter = itemPutCounter(vm, nil(), UINT32_MAX);
  Item* memo = itemPutCLM(vm, nil(), "m\0\xFF", 3, 1);
  Item* shown = itemPutNDLen(vm, nil(), 1.5, 12, 4);
  Item* value = array({nil(),
                       logical(true),
                       logical(false),
                       num(INT32_MIN),
                       num(INT32_MAX),
                       num(0),
                       longNum(-7),
                       counter,
                       dbl(0.1),
                       dbl(-0.0),
                       dbl(DBL_MAX),
                       dbl(5e-324),
                       dbl(INFINITY),
                       dbl(-INFINITY),
                       shown,
                       date("20240131"),
                       date("        "),
                       str(""),
                       str(std::string("a\0\"\xFF\r\n", 6)),
                       memo,
                       array({}),
                       array({array({num(1), array({str("deep"), logical(true)})}), dbl(2.25)})});
  EXPECT_EQ(readBack(toText(value)), itemDump(value));
}

TEST_F(ArrayTextTest, NotANumberStaysNotANumber) {
  Item* result = nil();
  std::string text = toText(array({dbl(NAN)}));
  ASSERT_TRUE(StrToArray(vm, text.data(), static_cast<uint32_t>(text.size()), result));
  EXPECT_TRUE(std::isnan(arrayGetItemPtr(result, 1)->item.asDouble.value));
}

TEST_F(ArrayTextTest, LayoutIsTagSizeAndBody) {
  EXPECT_EQ(toText(array({num(1), str("ab"), array({logical(true)})})),
            "#54AA00000003I000000011C00000002abA00000001L00000001T");
  EXPECT_EQ(
      toText(array({nil(), longNum(-12), date("20240131"), itemPutNDLen(vm, nil(), 2.5, 10, 2)})),
      "#54AA00000004U00000000G00000003-12D000000072460341N0000000810,2,2.5");
}

TEST_F(ArrayTextTest, NarrowHeaderReadsFourDigitSizesInEitherCase) {
  EXPECT_EQ(readBack("#52AA0002C000aabcdefghijI00013"), "8000:{0400:abcdefghij, 0002:3}");
  EXPECT_EQ(readBack("#54AA00000001C0000000A0123456789"), "8000:{0400:0123456789}");
}

TEST_F(ArrayTextTest, MalformedTextsAreRefused) {
  const char* refused[] = {
      "",
      "#54A",
      "#53AA00000000",
      "#54AI000000011",
      "#54AA0000000",
      "#54AA0000000G",
      "#54AA00000001X00000000",
      "#54AA00000001I00000002",
      "#54AA00000001I000000001",
      "#54AA00000001I0000000A2147483648",
      "#54AA00000001I00000002+1",
      "#54AA00000001L00000001X",
      "#54AA00000001U00000001x",
      "#54AA00000001N000000031,2",
      "#54AA00000001N0000000310,",
      "#54AA00000001D00000000",
      "#54AA00000000trailing",
      "#54AA00000002U00000000",
      "#54AAFFFFFFFFU00000000",
      "#52AA00000000",
  };
  for (const char* text : refused)
    EXPECT_EQ(readBack(text), "") << text;
}

TEST_F(ArrayTextTest, ElementTypeComesFromTheTagAlone) {
  EXPECT_EQ(arrayGetElemType("A0", 2, 4), HB_IT_ARRAY);
  EXPECT_EQ(arrayGetElemType("C", 1, 2), HB_IT_STRING);
  EXPECT_EQ(arrayGetElemType("M", 1, 4), HB_IT_MEMO);
  EXPECT_EQ(arrayGetElemType("Z", 1, 4), HB_IT_NIL);
  EXPECT_EQ(arrayGetElemType("A", 1, 3), HB_IT_NIL);
  EXPECT_EQ(arrayGetElemType("", 0, 4), HB_IT_NIL);
}

TEST_F(ArrayTextTest, ElementValueTellsTheBytesItTook) {
  Item* result = nil();
  EXPECT_EQ(arrayGetElemValue(vm, "A00000001I000000012rest", 23, 4, result), 19u);
  EXPECT_EQ(itemDump(result), "8000:{0002:2}");
  EXPECT_EQ(arrayGetElemValue(vm, "A00000002I000000012", 19, 4, result), 0u);
  EXPECT_EQ(result->type, HB_IT_NIL);
}

TEST_F(ArrayTextTest, AMillionLevelsOfNestingGoBothWays) {
  constexpr uint32_t DEPTH = 1000000;
  std::string text = toText(nested(DEPTH));
  ASSERT_EQ(text.size(), 4 + 9 * size_t{DEPTH + 1});
  Item* result = nil();
  ASSERT_TRUE(StrToArray(vm, text.data(), static_cast<uint32_t>(text.size()), result));
  uint32_t depth = 0;
  for (const Item* inner = result; itemArrayLen(inner) == 1; inner = arrayGetItemPtr(inner, 1))
    depth++;
  EXPECT_EQ(depth, DEPTH);
}

TEST_F(ArrayTextTest, CyclesObjectsAndHashesAreWrittenAsNil) {
  Item* cyclic = array({num(1), nil()});
  arraySet(vm, cyclic, 2, cyclic);
  Item* shared = array({num(2)});
  Item* hash = nil();
  hashNew(vm, hash);
  Item* object = errNew(vm);
  EXPECT_EQ(toText(array({cyclic, shared, shared, hash, object})),
            "#54AA00000005A00000002I000000011U00000000A00000001I000000012A00000001I000000012"
            "U00000000U00000000");
  itemClear(vm, arrayGetItemPtr(cyclic, 2));
  xItemRelease(vm, object);
}

TEST_F(ArrayTextTest, IdentifierIsUrlSafeBase64WithoutPadding) {
  const uint8_t counting[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  const uint8_t high[16] = {0xFB, 0xFF, 0xBF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                            0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
  for (auto [guid, expected] :
       {std::pair{counting, "AAECAwQFBgcICQoLDA0ODw"}, std::pair{high, "-_-__________________w"}}) {
    char* text = genguid22(vm, guid);
    EXPECT_STREQ(text, expected);
    vmFree(vm, text);
  }
}

}  // namespace
