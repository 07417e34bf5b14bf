// The length walker of the simple serial encoding on untrusted texts.
#include <string>

#include "encoding_fixture.h"

KOVO_FUNC(HB_SERIALNEXT);
KOVO_FUNC(HB_SERIALIZESIMPLE);

namespace {

std::string len8(uint32_t value) {
  return std::string(4, '\0') + static_cast<char>(value >> 24) + static_cast<char>(value >> 16) +
         static_cast<char>(value >> 8) + static_cast<char>(value);
}

class SerialSimpleTest : public EncodingTest {
 public:
  int32_t walked(const std::string& text) { return itemGetNL(callWith(HB_SERIALNEXT, text)); }
};

TEST_F(SerialSimpleTest, AMillionNestedArraysAreWalkedWithoutRecursion) {
  std::string text;
  for (int i = 0; i < 1000000; i++)
    text += "A" + len8(1);
  text += "Z";
  EXPECT_EQ(walked(text), static_cast<int32_t>(text.size()));
}

TEST_F(SerialSimpleTest, CountsLargerThanTheTextStopAtItsEnd) {
  EXPECT_EQ(walked("A" + len8(0xFFFFFFFF) + "ZZ"), 11);
  EXPECT_EQ(walked("H" + len8(0xFFFFFFFF) + "LT"), 11);
  EXPECT_EQ(walked("O" + len8(0x7FFFFFFF) + "Q" + len8(2) + "ab"), 20);
}

TEST_F(SerialSimpleTest, HeadAndLengthAddUpWithoutWrappingAround) {
  // 9 + 0xFFFFFFF7 is 2^32: the walker moves past the end and stops; the
  // size comes back in 32 bits.
  EXPECT_EQ(walked("A" + len8(0xFFFFFFFF) + "C" + len8(0xFFFFFFF7)), 9);
}

TEST_F(SerialSimpleTest, SizesAddUpAcrossEveryKind) {
  std::string object = "O" + len8(1) + "C" + len8(3) + "Cls" + "Z" + "NI" + len8(5);
  std::string hash = "H" + len8(1) + "D" + len8(2460341) + "LF";
  std::string text = "A" + len8(3) + object + hash + "ND12345678";
  EXPECT_EQ(walked(text + "trailing"), static_cast<int32_t>(text.size()));
}

TEST_F(SerialSimpleTest, IndirectElementIsWrittenAsTheElementItDesignates) {
  Item* values = array({num(1), str("ab")});
  Item element{};
  element.type = HB_IT_ELEMREF;
  element.item.asElemRef.array = values->item.asArray.value;
  element.item.asElemRef.index = 2;
  values->item.asArray.value->refCount++;
  EXPECT_EQ(text(call(HB_SERIALIZESIMPLE, {&element})), "C" + len8(2) + "ab");
  itemClear(vm, &element);
}

}  // namespace
