// The bit and number-representation functions: the hexadecimal operand
// reader, NUMAT under the text-tools search settings, pointer items, and the
// promise that no function of the family throws on an array.
#include <string>

#include "ct/hexoperand.h"
#include "frame/frame.h"
#include "vm_fixture.h"

extern "C" {
void NUMAT(VMEngine*);
void HB_NUMTOHEX(VMEngine*);
void HB_BITAND(VMEngine*);
void HB_BITNOT(VMEngine*);
void HB_BITISSET(VMEngine*);
void HB_BITSET(VMEngine*);
void HB_BITRESET(VMEngine*);
void HB_BITSHIFT(VMEngine*);
void NUMAND(VMEngine*);
void NUMOR(VMEngine*);
void NUMXOR(VMEngine*);
void NUMNOT(VMEngine*);
void NUMROL(VMEngine*);
void NUMMIRR(VMEngine*);
void NUMANDX(VMEngine*);
void NUMORX(VMEngine*);
void NUMXORX(VMEngine*);
void NUMNOTX(VMEngine*);
void NUMROLX(VMEngine*);
void NUMMIRRX(VMEngine*);
void SETBIT(VMEngine*);
void CLEARBIT(VMEngine*);
void ISBIT(VMEngine*);
void NUMLOW(VMEngine*);
void NUMHIGH(VMEngine*);
void CELSIUS(VMEngine*);
void FAHRENHEIT(VMEngine*);
void FTOC(VMEngine*);
void CTOF(VMEngine*);
void XTOC(VMEngine*);
void MANTISSA(VMEngine*);
void EXPONENT(VMEngine*);
void HB_HEXTONUM(VMEngine*);
void HB_STRTOHEX(VMEngine*);
void HB_HEXTOSTR(VMEngine*);
void exportedInfinity(VMEngine*) KOVO_ASM_NAME("INFINITY");
}

namespace {

uint32_t hexOperand(const std::string& text) {
  return hexOperandValue(text.data(), static_cast<uint32_t>(text.size()));
}

TEST(HexOperand, ReadsAtMostTheLastFourUpperCaseDigits) {
  EXPECT_EQ(hexOperand("FF"), 0xFFu);
  EXPECT_EQ(hexOperand("12345"), 0x2345u);
  EXPECT_EQ(hexOperand("0000FFFF"), 0xFFFFu);
  EXPECT_EQ(hexOperand(""), 0u);
  EXPECT_EQ(hexOperand("09AF"), 0x09AFu);
}

// The digit value is the distance from "0", or from 0x37 above "9": the six
// characters between "9" and "A" read as 3 to 9.
TEST(HexOperand, CharactersBetweenNineAndAAreDigitsToo) {
  EXPECT_EQ(hexOperand("1:"), 0x13u);
  EXPECT_EQ(hexOperand("@1"), 0x91u);
  EXPECT_EQ(hexOperand("?"), 8u);
}

TEST(HexOperand, FirstOtherCharacterFromTheRightEndsTheNumber) {
  EXPECT_EQ(hexOperand("ff"), 0u);
  EXPECT_EQ(hexOperand("aF"), 0xFu);
  EXPECT_EQ(hexOperand("1G2"), 2u);
  EXPECT_EQ(hexOperand("G"), 0u);
  EXPECT_EQ(hexOperand("/1"), 1u);
  EXPECT_EQ(hexOperand("1["), 0u);
  EXPECT_EQ(hexOperand(std::string("\0F", 2)), 0xFu);
  EXPECT_EQ(hexOperand("\xC1"
                       "1"),
            1u);
}

class NumatTest : public VmTest {
 protected:
  int32_t count(const char* pattern, const char* text) {
    return itemGetNI(call(NUMAT, {str(pattern), str(text)}));
  }
  int32_t count(const char* pattern, const char* text, int32_t ignore) {
    return itemGetNI(call(NUMAT, {str(pattern), str(text), num(ignore)}));
  }
};

TEST_F(NumatTest, MultiPassCountsOverlappingMatches) {
  EXPECT_EQ(count("aa", "aaaa"), 2);
  EXPECT_EQ(count("aba", "ababa"), 1);
  vm->ct.multiPass = 1;
  EXPECT_EQ(count("aa", "aaaa"), 3);
  EXPECT_EQ(count("aba", "ababa"), 2);
  EXPECT_EQ(count("aa", "aaaa", 1), 2);
}

TEST_F(NumatTest, WildcardModeMatchesAnyCharacterButNeverTheLastPlace) {
  vm->ct.atLikeMode = 1;
  vm->ct.atLikeChar = '?';
  EXPECT_EQ(count("a?", "axayaz"), 2);  // "az" ends the text
  EXPECT_EQ(count("?", "abc"), 2);
  EXPECT_EQ(count("a?", "ab"), 0);
  EXPECT_EQ(count("a?", "xxaxay", 2), 1);
  vm->ct.multiPass = 1;
  EXPECT_EQ(count("??", "abcd"), 2);
}

TEST_F(NumatTest, WildcardInTheTextIsAnOrdinaryCharacter) {
  vm->ct.atLikeMode = 1;
  vm->ct.atLikeChar = '*';
  EXPECT_EQ(count("a*", "a*xa*yz"), 2);
  EXPECT_EQ(count("*a", "**a**x"), 1);
  vm->ct.atLikeMode = 0;
  EXPECT_EQ(count("a*", "abxa*yz"), 1);
}

TEST_F(NumatTest, AnyOtherAtLikeModeFindsNothing) {
  vm->ct.atLikeMode = 2;
  EXPECT_EQ(count("a", "banana"), 0);
  EXPECT_TRUE(errors.empty());
}

TEST_F(VmTest, NumToHexWritesTheAddressOfAPointerItem) {
  int target = 0;
  Item* pointer = itemPutPtr(vm, nil(), &target);
  char expected[32];
  std::snprintf(expected, sizeof expected, "%jX",
                static_cast<uintmax_t>(reinterpret_cast<uintptr_t>(&target)));
  EXPECT_EQ(text(call(HB_NUMTOHEX, {pointer})), expected);
  EXPECT_EQ(text(call(HB_NUMTOHEX, {itemPutPtr(vm, nil(), nullptr)})), "");
}

TEST_F(VmTest, NoFunctionOfTheFamilyThrowsOnAnArray) {
  const VMFunction functions[] = {
      HB_BITAND, HB_BITNOT,   HB_BITISSET, HB_BITSET,   HB_BITRESET, HB_BITSHIFT,
      NUMAND,    NUMOR,       NUMXOR,      NUMNOT,      NUMROL,      NUMMIRR,
      NUMANDX,   NUMORX,      NUMXORX,     NUMNOTX,     NUMROLX,     NUMMIRRX,
      SETBIT,    CLEARBIT,    ISBIT,       NUMLOW,      NUMHIGH,     NUMAT,
      CELSIUS,   FAHRENHEIT,  FTOC,        CTOF,        XTOC,        MANTISSA,
      EXPONENT,  HB_NUMTOHEX, HB_HEXTONUM, HB_STRTOHEX, HB_HEXTOSTR, exportedInfinity};
  Item* list = array({num(1)});
  for (bool extendedFrames : {false, true}) {
    extended = extendedFrames;
    for (VMFunction function : functions) {
      call(function, {list});
      call(function, {num(8), list, list});
      call(function, {str("1"), num(1), list, list});
    }
  }
  EXPECT_TRUE(exceptions.empty()) << exceptions.front();
}

}  // namespace
