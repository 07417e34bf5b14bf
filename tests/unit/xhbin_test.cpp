// The XHBIN reader and writer: every tag, the logical quirk, untrusted streams
// and the natives.
#include <cstring>
#include <string>

#include "encoding_fixture.h"
#include "item_dump.h"
#include "rtl/xhbin.h"

KOVO_FUNC(VAR2BIN);
KOVO_FUNC(BIN2VAR);

namespace {

std::string le32(uint32_t value) {
  return {static_cast<char>(value), static_cast<char>(value >> 8), static_cast<char>(value >> 16),
          static_cast<char>(value >> 24)};
}

std::string tagged(uint32_t tag, uint32_t value) {
  return le32(tag) + le32(value);
}

const std::string SIGNATURE("XHBIN\0", 6);

class XhbinTest : public EncodingTest {
 public:
  std::string decoded(const std::string& stream) { return itemDump(callWith(BIN2VAR, stream)); }
  std::string encoded(Item* value) { return text(call(VAR2BIN, {value})); }
};

TEST_F(XhbinTest, EveryTagReadsBackAsItsItem) {
  double half = 0.5;
  std::string doubleBytes(reinterpret_cast<const char*>(&half), sizeof half);
  std::string stream = SIGNATURE + tagged(0x8000, 10) + tagged(0x0000, 77) + tagged(0x0002, -3u) +
                       tagged(0x0008, 40000) + le32(0x0010) + doubleBytes +
                       tagged(0x0020, 2460341) + tagged(0x0040, 0xFFFFFFFF) + tagged(0x0080, 5) +
                       le32(0x0400) + std::string("ab\0", 3) + le32(0x0C00) +
                       std::string("cd\0", 3) + tagged(0x8000, 0);
  EXPECT_EQ(decoded(stream),
            "8000:{0002:0, 0002:-3, 0008:40000, 0010:0.5/10/2, 0020:2460341, 0008:-1, 0080:T, "
            "0400:ab, 0400:cd, 8000:{}}");
  EXPECT_TRUE(boxes.empty());
}

TEST_F(XhbinTest, UnknownTagIsReportedAndLeavesItsElementNil) {
  std::string stream = SIGNATURE + tagged(0x8000, 2) + le32(0x1000) + tagged(0x0002, 9);
  EXPECT_EQ(decoded(stream), "8000:{0000:, 0002:9}");
  ASSERT_EQ(boxes.size(), 1u);
  EXPECT_EQ(boxes[0],
            "BIN2VAR|\xD4\xF3\xED\xEA\xF6\xE8\xFF bin2Item() \xF2\xE8\xEF 1000 \xED\xE5 "
            "\xEE\xE1\xF0\xE0\xE1\xE0\xF2\xFB\xE2\xE0\xE5\xF2\xF1\xFF!");
}

TEST_F(XhbinTest, LogicalsShortenTheStringButTheWholeEncodingIsWritten) {
  Item* logicals = nil();
  arrayNew(vm, logicals, 100);
  for (uint32_t i = 1; i <= 100; i++)
    itemPutL(vm, arrayGetItemPtr(logicals, i), true);
  std::string stream = encoded(logicals);
  ASSERT_EQ(stream.size(), 6u + 8 + 100 * 5);
  // The string ends in the tag of element 63; its value and everything
  // after it read as zeros: one false, then integers 0.
  std::string expected = "8000:{";
  for (int i = 1; i <= 100; i++)
    expected += std::string(i > 1 ? ", " : "") + (i <= 62   ? "0080:T"
                                                  : i == 63 ? "0080:F"
                                                            : "0002:0");
  EXPECT_EQ(decoded(stream), expected + "}");
}

TEST_F(XhbinTest, TruncatedStreamsReadZerosOnlyAsFarAsTheWriterCouldCut) {
  EXPECT_EQ(decoded(SIGNATURE + le32(2) + "\x05"), "0002:5");
  EXPECT_EQ(decoded(SIGNATURE), "0002:0");
  EXPECT_EQ(decoded(SIGNATURE + le32(0x0400) + "abc"), "0400:abc");
  EXPECT_EQ(decoded(SIGNATURE + tagged(0x8000, 2)), "0000:");
  EXPECT_EQ(decoded(SIGNATURE + le32(0x0010)), "0010:0/10/2");
  EXPECT_EQ(decoded(std::string("XHBIN")), "0000:");
}

TEST_F(XhbinTest, CountsLargerThanTheStreamGiveNilWithoutAllocating) {
  EXPECT_EQ(decoded(SIGNATURE + tagged(0x8000, 0xFFFFFFFF)), "0000:");
  // Each of a thousand arrays claims a thousand more: only the bytes decide.
  std::string claims;
  for (int i = 0; i < 1000; i++)
    claims += tagged(0x8000, 1000);
  EXPECT_EQ(decoded(SIGNATURE + claims), "0000:");
}

TEST_F(XhbinTest, AMillionLevelsOfNestingGoBothWays) {
  std::string stream = SIGNATURE;
  for (int i = 0; i < 1000000; i++)
    stream += tagged(0x8000, 1);
  stream += tagged(0x0002, 7);
  Item* value = nil();
  itemCopy(vm, value, callWith(BIN2VAR, stream));
  ASSERT_EQ(value->type, HB_IT_ARRAY);
  EXPECT_EQ(encoded(value), stream);
}

TEST_F(XhbinTest, ArrayInsideItselfIsReportedAsUnencodable) {
  Item* cyclic = array({num(1), nil()});
  arraySet(vm, cyclic, 2, cyclic);
  EXPECT_EQ(encoded(cyclic), SIGNATURE + tagged(0x8000, 2) + tagged(0x0002, 1));
  ASSERT_EQ(boxes.size(), 2u);
  EXPECT_EQ(boxes[0].substr(0, 8), "BIN2VAR|");
  EXPECT_NE(boxes[0].find("itemBinSize() \xF2\xE8\xEF 8000 "), std::string::npos);
  EXPECT_NE(boxes[1].find("|\xD4\xF3\xED\xEA\xF6\xE8\xFF item2Bin() \xF2\xE8\xEF 8000 "),
            std::string::npos);
  itemClear(vm, arrayGetItemPtr(cyclic, 2));
}

TEST_F(XhbinTest, NativesEncodeIntoTheHeapAndDecodeIntoAHeldItem) {
  uint32_t length = 0;
  EXPECT_EQ(var2bin(vm, nullptr, &length), nullptr);
  char* stream = var2bin(vm, array({str("AB"), num(5)}), &length);
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(length, 6u + 8 + 7 + 8);
  Item* item = bin2item(vm, stream);
  EXPECT_EQ(itemDump(item), "8000:{0400:AB, 0002:5}");
  xItemRelease(vm, item);
  vmFree(vm, stream);
  for (const char* other : {"abc", "", "XHBIN!"}) {
    item = bin2item(vm, other);
    EXPECT_EQ(item->type, HB_IT_NIL);
    xItemRelease(vm, item);
  }
}

}  // namespace
