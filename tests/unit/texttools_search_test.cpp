// The search primitives, the character-set scanner and the replacement
// engine, compared with straightforward byte loops on random short texts.
#include <cstring>
#include <random>
#include <string>

#include "ct/charset.h"
#include "ct/last_occurrence.h"
#include "ct/replace.h"
#include "ct/result.h"
#include "ct/search.h"
#include "ct/token_scan.h"
#include "vm_fixture.h"

namespace {

constexpr char WILDCARD = '?';

bool matchesAt(const std::string& text, size_t at, const std::string& pattern, bool like) {
  for (size_t i = 0; i < pattern.size(); i++) {
    if (!(like && pattern[i] == WILDCARD) && pattern[i] != text[at + i]) return false;
  }
  return true;
}

// Offset of the match or -1. The forward wildcard search leaves out the last
// position where the pattern fits.
long referenceSearch(const std::string& text, const std::string& pattern, bool like, bool forward) {
  if (pattern.empty() || pattern.size() > text.size()) return -1;
  long last = static_cast<long>(text.size() - pattern.size()) - (like && forward ? 1 : 0);
  for (long i = 0; i <= last; i++) {
    long at = forward ? i : last - i;
    if (matchesAt(text, static_cast<size_t>(at), pattern, like)) return at;
  }
  return -1;
}

long primitiveSearch(const std::string& text, const std::string& pattern, bool like, bool forward,
                     uint32_t* matchLength) {
  auto length = static_cast<uint32_t>(text.size());
  auto patternLength = static_cast<uint32_t>(pattern.size());
  const char* match =
      like ? (forward ? ctAtLikeForward : ctAtLikeBackward)(text.data(), length, pattern.data(),
                                                            patternLength, WILDCARD, matchLength)
           : (forward ? ctAtForward : ctAtBackward)(text.data(), length, pattern.data(),
                                                    patternLength, matchLength);
  return match ? match - text.data() : -1;
}

// Few distinct bytes, so that matches and near-matches are frequent; the
// wildcard and bytes of both halves among them.
std::string randomBytes(std::mt19937& random, size_t length, const std::string& alphabet) {
  std::string bytes(length, '\0');
  for (char& byte : bytes)
    byte = alphabet[random() % alphabet.size()];
  return bytes;
}

const std::string ALPHABET = std::string("ab?\xE9", 4) + std::string(1, '\0');

TEST(SearchPrimitives, AgreeWithTheByteLoopInBothModesAndDirections) {
  std::mt19937 random(20240131);
  for (int round = 0; round < 40000; round++) {
    std::string text = randomBytes(random, random() % 90, ALPHABET);
    std::string pattern = randomBytes(random, random() % 6, ALPHABET);
    if (round % 7 == 0 && text.size() > 4) {
      size_t from = random() % (text.size() - 3);
      pattern = text.substr(from, 1 + random() % 4);  // a pattern that occurs
    }
    for (bool like : {false, true}) {
      for (bool forward : {false, true}) {
        uint32_t matchLength = 12345;
        long expected = referenceSearch(text, pattern, like, forward);
        long found = primitiveSearch(text, pattern, like, forward, &matchLength);
        ASSERT_EQ(found, expected) << "like=" << like << " forward=" << forward << " text of "
                                   << text.size() << " bytes, pattern of " << pattern.size();
        if (found >= 0) {
          EXPECT_EQ(matchLength, pattern.size());
        }
      }
    }
  }
}

TEST(SearchPrimitives, ForwardWildcardSearchNeverTriesTheLastFittingPosition) {
  EXPECT_EQ(ctAtLikeForward("xab", 3, "a?", 2, WILDCARD, nullptr), nullptr);
  EXPECT_EQ(ctAtLikeForward("ab", 2, "??", 2, WILDCARD, nullptr), nullptr);
  const char* text = "xab";
  EXPECT_EQ(ctAtLikeBackward(text, 3, "a?", 2, WILDCARD, nullptr), text + 1);
  EXPECT_EQ(ctAtLikeForward(text, 3, "??", 2, WILDCARD, nullptr), text);
  EXPECT_EQ(ctAtLikeBackward(text, 3, "??", 2, WILDCARD, nullptr), text + 1);
  EXPECT_EQ(ctAtForward(text, 3, "ab", 2, nullptr), text + 1);
}

TEST(SearchPrimitives, ExactModeTakesTheWildcardLiterally) {
  const char* text = "a?b";
  EXPECT_EQ(ctAtForward(text, 3, "?", 1, nullptr), text + 1);
  EXPECT_EQ(ctAtBackward(text, 3, "??", 2, nullptr), nullptr);
}

// The two-way backward search alone, on short texts of two letters where
// periodic patterns abound, and through the exact search on long texts whose
// every position passes the two-byte filter, where it takes over.
TEST(SearchPrimitives, LastOccurrenceAgreesWithTheByteLoop) {
  std::mt19937 random(16);
  for (int round = 0; round < 40000; round++) {
    std::string text = randomBytes(random, random() % 60, "ab");
    std::string pattern = randomBytes(random, 1 + random() % 8, "ab");
    const char* found = lastOccurrence(text.data(), text.size(), pattern.data(), pattern.size());
    ASSERT_EQ(found ? found - text.data() : -1, referenceSearch(text, pattern, false, false))
        << text << " / " << pattern;
  }
  for (const auto& [run, tail] : {std::pair<size_t, std::string>{3000, "ba"}, {40, "aba"}}) {
    std::string pattern = std::string(run, 'a') + tail;
    for (size_t at : {size_t{0}, size_t{7}, size_t{50000}}) {
      std::string text(100000, 'a');
      text.replace(at, pattern.size(), pattern);
      EXPECT_EQ(primitiveSearch(text, pattern, false, false, nullptr), static_cast<long>(at));
    }
    EXPECT_EQ(primitiveSearch(std::string(100000, 'a'), pattern, false, false, nullptr), -1);
  }
}

long referenceCharSet(const std::string& text, const std::string& set, uint32_t* index) {
  for (size_t i = 0; i < text.size(); i++) {
    size_t member = set.find(text[i]);
    if (member != std::string::npos) {
      *index = static_cast<uint32_t>(member);
      return static_cast<long>(i);
    }
  }
  return -1;
}

TEST(CharSetSearch, AgreesWithTheByteLoop) {
  std::mt19937 random(77);
  const std::string alphabet = std::string("ab ,\x8A\xFF", 6) + std::string(1, '\0');
  for (int round = 0; round < 20000; round++) {
    std::string text = randomBytes(random, random() % 40, alphabet);
    std::string set = randomBytes(random, random() % 5, alphabet);
    uint32_t expectedIndex = 0;
    uint32_t index = 0;
    long expected = referenceCharSet(text, set, &expectedIndex);
    const char* found = ctAtCharSet(text.data(), static_cast<uint32_t>(text.size()), set.data(),
                                    static_cast<uint32_t>(set.size()), &index);
    ASSERT_EQ(found ? found - text.data() : -1, expected);
    if (found) {
      EXPECT_EQ(index, expectedIndex);
    }
  }
}

// Every byte value, in and out of the set, across block borders.
TEST(CharSetScanner, FindsWhatRepeatedSetSearchesFind) {
  std::mt19937 random(4242);
  for (int round = 0; round < 3000; round++) {
    std::string text(random() % 300, '\0');
    for (char& byte : text)
      byte = static_cast<char>(random() % 4 == 0 ? random() % 256 : 'a' + random() % 3);
    std::string set(random() % 30, '\0');
    for (char& byte : set)
      byte = static_cast<char>(random() % 256);
    auto length = static_cast<uint32_t>(text.size());
    const CtCharSet prepared(set.data(), static_cast<uint32_t>(set.size()));
    CtCharSetScanner scanner(text.data(), length, prepared);
    const char* from = text.data();
    for (;;) {
      const char* expected = ctAtCharSet(from, static_cast<uint32_t>(text.data() + length - from),
                                         set.data(), static_cast<uint32_t>(set.size()), nullptr);
      const char* found = scanner.next();
      ASSERT_EQ(found, expected);
      if (!found) break;
      from = found + 1;
    }
    EXPECT_EQ(scanner.next(), nullptr);
  }
}

// Tokens as the scan counts them without limits: it stops where only
// separators remain or after a token that no separator ended.
uint32_t scannedTokens(const std::string& text, const CtCharSet& set) {
  TokenScan scan({text.data(), static_cast<uint32_t>(text.size())}, set, CT_ALL);
  uint32_t count = 0;
  for (;;) {
    TokenStep token = scan.step();
    if (scan.nothingLeft(token)) break;
    count++;
    if (!token.separator) break;
  }
  return count;
}

TEST(CharSetScanner, CountsTheTokensOfAnUnlimitedScanByRuns) {
  std::mt19937 random(31337);
  const std::string alphabet = std::string("ab ,\xE9", 5) + std::string(1, '\0');
  for (int round = 0; round < 5000; round++) {
    std::string text = randomBytes(random, random() % 200, alphabet);
    std::string set = randomBytes(random, 1 + random() % 3, alphabet);
    const CtCharSet prepared(set.data(), static_cast<uint32_t>(set.size()));
    ASSERT_EQ(prepared.runsOutside(text.data(), static_cast<uint32_t>(text.size())),
              scannedTokens(text, prepared));
  }
}

// The replacement loop as it reads: one work string changed in place.
std::string referenceReplace(VMEngine* vm, std::string work, uint32_t start,
                             const std::string& pattern, const std::string& replacement,
                             uint32_t n) {
  bool multiPass = vm->ct.multiPass != 0;
  for (uint32_t count = 0; count < n && start <= work.size(); count++) {
    uint32_t matchLength = 0;
    const char* match =
        ctSearchForward(vm, work.data() + start, static_cast<uint32_t>(work.size() - start),
                        pattern.data(), static_cast<uint32_t>(pattern.size()), &matchLength);
    if (!match) break;
    auto at = static_cast<uint32_t>(match - work.data());
    work.replace(at, matchLength, replacement);
    start = at + (multiPass ? 1 : static_cast<uint32_t>(replacement.size()));
  }
  return work;
}

CtText textOf(const std::string& bytes) {
  return {bytes.data(), static_cast<uint32_t>(bytes.size())};
}

TEST_F(VmTest, ReplacingAgreesWithTheInPlaceLoop) {
  std::mt19937 random(99);
  for (int round = 0; round < 20000; round++) {
    vm->ct.multiPass = static_cast<int32_t>(random() % 2);
    vm->ct.atLikeMode = static_cast<int32_t>(random() % 3);
    std::string text = randomBytes(random, 1 + random() % 60, "ab?");
    std::string pattern = randomBytes(random, random() % 4, "ab?");
    std::string replacement = randomBytes(random, random() % 5, "abc");
    auto start = static_cast<uint32_t>(random() % text.size());
    uint32_t n = random() % 3 == 0 ? CT_ALL : 1 + random() % 4;
    if (vm->ct.multiPass && n == CT_ALL) n = 200;  // a replacement may match again for ever
    std::string expected = referenceReplace(vm, text, start, pattern, replacement, n);
    uint32_t length = 0;
    char* result = ctReplaceMatches(vm, textOf(text), start, textOf(pattern), textOf(replacement),
                                    n, STRING_LENGTH_LIMIT, &length);
    ASSERT_NE(result, nullptr);
    ASSERT_EQ(std::string(result, length), expected)
        << "text " << text << " pattern " << pattern << " replacement " << replacement << " start "
        << start << " n " << n << " multi-pass " << vm->ct.multiPass << " mode "
        << vm->ct.atLikeMode;
    EXPECT_EQ(result[length], '\0');
    vmFree(vm, result);
  }
}

TEST_F(VmTest, EndlessMultiPassReplacingStopsAtTheLimit) {
  vm->ct.multiPass = 1;
  uint32_t length = 0;
  EXPECT_EQ(
      ctReplaceMatches(vm, textOf("xa"), 0, textOf("a"), textOf("aa"), CT_ALL, 100000, &length),
      nullptr);
  EXPECT_EQ(ctReplaceMatches(vm, textOf("a"), 0, textOf("a"), textOf("aba"), CT_ALL, 5, &length),
            nullptr);
  vm->ct.multiPass = 0;
  EXPECT_EQ(ctReplaceMatches(vm, textOf("aaa"), 0, textOf("a"), textOf("bb"), CT_ALL, 6, &length),
            nullptr);
  char* result =
      ctReplaceMatches(vm, textOf("aaa"), 0, textOf("a"), textOf("bb"), CT_ALL, 7, &length);
  ASSERT_NE(result, nullptr);
  EXPECT_EQ(std::string(result, length), "bbbbbb");
  vmFree(vm, result);
}

}  // namespace
