// The host's case mapping and trimming, and what the string functions make
// of arrays, other code pages and other languages.
#include <cstring>
#include <random>

#include "frame/frame.h"
#include "vm_fixture.h"

extern "C" {
void LEN(VMEngine*);
void LEFT(VMEngine*);
void RIGHT(VMEngine*);
void SUBSTR(VMEngine*);
void SPACE(VMEngine*);
void REPLICATE(VMEngine*);
void PADR(VMEngine*);
void PADL(VMEngine*);
void PADC(VMEngine*);
void STRDEL(VMEngine*);
void STUFF(VMEngine*);
void STRPEEK(VMEngine*);
void STRPOKE(VMEngine*);
void LOWER(VMEngine*);
void UPPER(VMEngine*);
void LTRIM(VMEngine*);
void RTRIM(VMEngine*);
void ALLTRIM(VMEngine*);
void HB_FUN_WORD(VMEngine*);
void LENNUM(VMEngine*);
void HB_STRING2POINTER(VMEngine*);
void HB_POINTER2STRING(VMEngine*);
void ISAFFIRM(VMEngine*);
void ISNEGATIVE(VMEngine*);
void ISALPHA(VMEngine*);
void ISUPPER(VMEngine*);
void ISLOWER(VMEngine*);
void RAT(VMEngine*);
void STRTRAN(VMEngine*);
void OEMTOANSI(VMEngine*);
void ANSITOOEM(VMEngine*);
void __STRTOKEN(VMEngine*);
void __STRTKPTR(VMEngine*);
void __STRTOKENCOUNT(VMEngine*);
void WILDMATCH(VMEngine*);
void SOUNDEX(VMEngine*);
}

namespace {

std::string randomBytes(std::mt19937& random, size_t length, bool asciiOnly) {
  std::string bytes(length, '\0');
  for (char& c : bytes)
    c = static_cast<char>(random() % (asciiOnly ? 128 : 256));
  return bytes;
}

TEST_F(VmTest, CaseMappingFollowsTheCodePageTableAtEveryLengthAndAlignment) {
  std::mt19937 random(7);
  for (const char* id : {"CP1251", "CP866"}) {
    ASSERT_NE(cdpSelectID(vm, id), nullptr);
    const CodePage* page = cdpCurrent(vm);
    for (size_t length = 0; length <= 100; length++) {
      for (size_t offset = 0; offset < 8; offset++) {
        std::string source = randomBytes(random, length + offset, length % 3 != 0);
        const char* from = source.data() + offset;
        std::string upper(length, '\0');
        std::string lower(length, '\0');
        strUpperCopy(vm, upper.data(), from, static_cast<uint32_t>(length));
        strLowerCopy(vm, lower.data(), from, static_cast<uint32_t>(length));
        for (size_t i = 0; i < length; i++) {
          auto c = static_cast<unsigned char>(from[i]);
          ASSERT_EQ(static_cast<unsigned char>(upper[i]), page->upper[c]) << id << " byte " << i;
          ASSERT_EQ(static_cast<unsigned char>(lower[i]), page->lower[c]) << id << " byte " << i;
        }
      }
    }
  }
}

TEST_F(VmTest, CaseMappingWorksInPlace) {
  std::string text = std::string(40, 'a') + "\xE0" + std::string(40, 'z');
  strUpperCopy(vm, text.data(), text.data(), static_cast<uint32_t>(text.size()));
  EXPECT_EQ(text, std::string(40, 'A') + "\xC0" + std::string(40, 'Z'));
}

uint32_t naiveAt(const std::string& sub, const std::string& text) {
  size_t found = text.find(sub);
  return sub.empty() || found == std::string::npos ? 0 : static_cast<uint32_t>(found) + 1;
}

uint32_t strAt(const std::string& sub, const std::string& text) {
  return hb_strAt(sub.data(), static_cast<uint32_t>(sub.size()), text.data(),
                  static_cast<uint32_t>(text.size()));
}

TEST(StrAt, FindsTheFirstOccurrenceLikeAPlainSearch) {
  std::mt19937 random(3);
  for (int round = 0; round < 3000; round++) {
    size_t alphabet = 2 + round % 4;
    std::string text(random() % 200, 'a');
    for (char& c : text)
      c = static_cast<char>('a' + random() % alphabet);
    std::string sub(1 + random() % 12, 'a');
    for (char& c : sub)
      c = static_cast<char>('a' + random() % alphabet);
    ASSERT_EQ(strAt(sub, text), naiveAt(sub, text)) << sub << " in " << text;
  }
}

TEST(StrAt, FindsMatchesAtTheEndsAndAcrossEveryBlockBoundary) {
  const std::string pattern("x\0z", 3);
  for (size_t length = 3; length < 70; length++) {
    for (size_t at = 0; at + 3 <= length; at++) {
      std::string text(length, '.');
      text.replace(at, 3, pattern);
      ASSERT_EQ(strAt(pattern, text), at + 1) << length << " " << at;
    }
  }
  EXPECT_EQ(strAt("ab", "ab"), 1u);
  EXPECT_EQ(strAt("abc", "ab"), 0u);
  EXPECT_EQ(strAt("", "ab"), 0u);
}

// Texts where nearly every position passes the first-and-last-byte test.
TEST(StrAt, StaysCorrectWhereAlmostEveryPositionIsACandidate) {
  std::string text(100000, 'a');
  EXPECT_EQ(strAt(std::string(50, 'a') + "b", text), 0u);
  text += std::string(50, 'a') + "b";
  EXPECT_EQ(strAt(std::string(50, 'a') + "b", text), 100001u);
  EXPECT_EQ(strAt("a" + std::string(30, 'b') + "a",
                  std::string(5000, 'a') + "a" + std::string(30, 'b') + "a"),
            5001u);
}

TEST_F(VmTest, TrimPassesBlankRunsOfEveryLength) {
  for (uint32_t before = 0; before <= 20; before++) {
    for (uint32_t after = 0; after <= 20; after++) {
      std::string text = std::string(before, ' ') + "x" + std::string(after, ' ');
      uint32_t length = static_cast<uint32_t>(text.size());
      const char* start = strLTrim(text.data(), &length);
      EXPECT_EQ(start, text.data() + before);
      EXPECT_EQ(length, after + 1);
      EXPECT_EQ(strRTrimLen(text.data(), static_cast<uint32_t>(text.size()), false), before + 1);
    }
  }
}

TEST_F(VmTest, TrimOfWhiteSpaceMixesTabsIntoBlankRuns) {
  std::string text = "x\t" + std::string(16, ' ') + "\r\n" + std::string(9, ' ');
  EXPECT_EQ(strRTrimLen(text.data(), static_cast<uint32_t>(text.size()), true), 1u);
  EXPECT_EQ(strRTrimLen(text.data(), static_cast<uint32_t>(text.size()), false), 20u);
  std::string leading = std::string(9, ' ') + "\t" + std::string(8, ' ') + "x";
  uint32_t length = static_cast<uint32_t>(leading.size());
  EXPECT_EQ(*strLTrim(leading.data(), &length), 'x');
  EXPECT_EQ(length, 1u);
}

// No argument of any function here, in any position and either frame layout,
// lets an array reach a reader that throws.
TEST_F(VmTest, AnArrayInAnyPositionNeverLeavesThroughTheReadersException) {
  VMFunction functions[] = {LEN,
                            LEFT,
                            RIGHT,
                            SUBSTR,
                            SPACE,
                            REPLICATE,
                            PADR,
                            PADL,
                            PADC,
                            STRDEL,
                            STUFF,
                            STRPEEK,
                            STRPOKE,
                            LOWER,
                            UPPER,
                            LTRIM,
                            RTRIM,
                            ALLTRIM,
                            HB_FUN_WORD,
                            LENNUM,
                            HB_STRING2POINTER,
                            HB_POINTER2STRING,
                            ISAFFIRM,
                            ISNEGATIVE,
                            RAT,
                            STRTRAN,
                            OEMTOANSI,
                            ANSITOOEM,
                            __STRTOKEN,
                            __STRTKPTR,
                            __STRTOKENCOUNT,
                            WILDMATCH,
                            SOUNDEX};
  for (bool layout : {false, true}) {
    extended = layout;
    for (VMFunction function : functions) {
      for (int position = 0; position < 5; position++) {
        Item* args[] = {str("a b"), num(2), num(1), str("x"), num(1)};
        args[position] = array({str("a")});
        call(function, {args[0], args[1], args[2], args[3], args[4]});
      }
    }
  }
  EXPECT_TRUE(exceptions.empty()) << exceptions.front();
}

TEST_F(VmTest, OversizedReplicateRaisesBeforeAllocating) {
  Item* text = str(std::string(65536, ' '));
  Item* count = num(65536);
  size_t blocksBefore = vmHeapLiveBlocks(vm);
  Item* result = call(REPLICATE, {text, count});
  EXPECT_EQ(result->type, HB_IT_NIL);
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_EQ(errors[0], "3/BASE/1234 REPLICATE");
  EXPECT_EQ(vmHeapLiveBlocks(vm), blocksBefore);
}

TEST_F(VmTest, YesAndNoFollowTheCurrentLanguage) {
  ASSERT_NE(langSelectID(vm, "RU"), nullptr);
  EXPECT_TRUE(itemGetL(call(ISAFFIRM, {str("\xC4")})));
  EXPECT_FALSE(itemGetL(call(ISAFFIRM, {str("\xE4")})));  // no national upper-casing
  EXPECT_FALSE(itemGetL(call(ISAFFIRM, {str("y")})));
  EXPECT_TRUE(itemGetL(call(ISNEGATIVE, {str("\xCD\xE5\xF2")})));
  EXPECT_FALSE(itemGetL(call(ISNEGATIVE, {str("n")})));
}

TEST_F(VmTest, LettersAndCaseFollowTheCurrentCodePage) {
  ASSERT_NE(cdpSelectID(vm, "CP866"), nullptr);
  EXPECT_TRUE(itemGetL(call(ISUPPER, {str("\x80")})));
  EXPECT_TRUE(itemGetL(call(ISLOWER, {str("\xE0")})));
  EXPECT_TRUE(itemGetL(call(ISALPHA, {str("\xF1")})));
  EXPECT_FALSE(itemGetL(call(ISALPHA, {str("\xC0")})));  // pseudo-graphics here
  EXPECT_EQ(text(call(UPPER, {str("\xA0\xF1z\xC0")})), "\x80\xF0Z\xC0");
  EXPECT_EQ(text(call(LOWER, {str("\x9F\xF0")})), "\xEF\xF1");
}

}  // namespace
