// Plain byte-loop searches without preprocessing. Two bytes of the pattern
// (its first and last, or in wildcard mode the outermost ones that are no
// wildcard) are compared for sixteen start positions at once, and the whole
// pattern only where both agree; the positions tried and their order are
// those of the byte loop.
#include "search.h"

#include <cstring>

#include "kovo/byte_vector.h"
#include "kovo/host_text.h"
#include "last_occurrence.h"

namespace {

constexpr uint32_t BLOCK = BYTE_VECTOR_SIZE;

bool fits(uint32_t length, uint32_t patternLength) {
  return patternLength != 0 && patternLength <= length;
}

// The pattern as the scans see it. In wildcard mode a pattern byte equal to
// the wildcard matches any text byte; a wildcard in the text is an ordinary
// character.
struct Needle {
  const char* pattern;
  uint32_t length;
  bool like;
  char wildcard;
  uint32_t firstAnchor;  // offsets of the two bytes compared first
  uint32_t lastAnchor;
};

Needle exactNeedle(const char* pattern, uint32_t patternLength) {
  return {pattern, patternLength, false, 0, 0, patternLength - 1};
}

// Null when the pattern is wildcards only, so that it matches everywhere.
bool likeNeedle(const char* pattern, uint32_t patternLength, char wildcard, Needle* needle) {
  uint32_t first = 0;
  while (first < patternLength && pattern[first] == wildcard)
    first++;
  if (first == patternLength) return false;
  uint32_t last = patternLength - 1;
  while (pattern[last] == wildcard)
    last--;
  *needle = {pattern, patternLength, true, wildcard, first, last};
  return true;
}

bool wholeMatch(const char* at, const Needle& needle) {
  if (!needle.like) return std::memcmp(at, needle.pattern, needle.length) == 0;
  for (uint32_t i = 0; i < needle.length; i++) {
    if (needle.pattern[i] != needle.wildcard && needle.pattern[i] != at[i]) return false;
  }
  return true;
}

bool anchorsAt(const char* at, const Needle& needle) {
  return at[needle.firstAnchor] == needle.pattern[needle.firstAnchor] &&
         at[needle.lastAnchor] == needle.pattern[needle.lastAnchor];
}

// Compares the two anchor bytes for the sixteen start positions of a block.
class AnchorFilter {
 public:
  explicit AnchorFilter(const Needle& needle)
      : firstAnchor_(needle.firstAnchor),
        lastAnchor_(needle.lastAnchor),
        first_(repeatByte(static_cast<unsigned char>(needle.pattern[needle.firstAnchor]))),
        last_(repeatByte(static_cast<unsigned char>(needle.pattern[needle.lastAnchor]))) {}

  // Bit k is set when start position k of the block has both anchor bytes.
  uint32_t candidates(const char* block) const {
    return laneMask(reinterpret_cast<ByteVector>((loadBytes(block + firstAnchor_) == first_) &
                                                 (loadBytes(block + lastAnchor_) == last_)));
  }

 private:
  uint32_t firstAnchor_;
  uint32_t lastAnchor_;
  ByteVector first_;
  ByteVector last_;
};

// The first match among the start positions [0, positions).
const char* firstMatch(const char* text, uint32_t positions, const Needle& needle) {
  const AnchorFilter filter(needle);
  uint32_t position = 0;
  for (; positions - position >= BLOCK; position += BLOCK) {
    for (uint32_t bits = filter.candidates(text + position); bits != 0; bits &= bits - 1) {
      const char* at = text + position + __builtin_ctz(bits);
      if (wholeMatch(at, needle)) return at;
    }
  }
  for (; position < positions; position++) {
    const char* at = text + position;
    if (anchorsAt(at, needle) && wholeMatch(at, needle)) return at;
  }
  return nullptr;
}

// The last match among the start positions [0, positions). Should the full
// comparisons of an exact pattern come to cost more than the scan (texts like
// "aaaa...a" searched for "aa...aba"), the positions left are handed to the
// two-way search, which is linear in every case.
const char* lastMatch(const char* text, uint32_t positions, const Needle& needle) {
  const AnchorFilter filter(needle);
  uint64_t compared = 0;
  uint32_t remaining = positions;
  for (; remaining >= BLOCK; remaining -= BLOCK) {
    const char* block = text + remaining - BLOCK;
    for (uint32_t bits = filter.candidates(block); bits != 0;) {
      int top = 31 - __builtin_clz(bits);
      if (wholeMatch(block + top, needle)) return block + top;
      bits &= ~(1u << top);
      compared += needle.length;
    }
    if (!needle.like && compared > 2 * uint64_t{positions - remaining} + 4096) {
      return lastOccurrence(text, remaining - BLOCK + needle.length - 1, needle.pattern,
                            needle.length);
    }
  }
  while (remaining > 0) {
    const char* at = text + --remaining;
    if (anchorsAt(at, needle) && wholeMatch(at, needle)) return at;
  }
  return nullptr;
}

const char* reportMatch(const char* match, uint32_t patternLength, uint32_t* matchLength) {
  if (match && matchLength) *matchLength = patternLength;
  return match;
}

}  // namespace

// The host's substring search, which stays linear on any text.
const char* ctAtForward(const char* text, uint32_t length, const char* pattern,
                        uint32_t patternLength, uint32_t* matchLength) {
  if (!fits(length, patternLength)) return nullptr;
  uint32_t position = hb_strAt(pattern, patternLength, text, length);
  return reportMatch(position ? text + position - 1 : nullptr, patternLength, matchLength);
}

const char* ctAtBackward(const char* text, uint32_t length, const char* pattern,
                         uint32_t patternLength, uint32_t* matchLength) {
  if (!fits(length, patternLength)) return nullptr;
  return reportMatch(
      lastMatch(text, length - patternLength + 1, exactNeedle(pattern, patternLength)),
      patternLength, matchLength);
}

const char* ctAtLikeForward(const char* text, uint32_t length, const char* pattern,
                            uint32_t patternLength, char wildcard, uint32_t* matchLength) {
  if (!fits(length, patternLength)) return nullptr;
  uint32_t positions = length - patternLength;  // the last fitting position is not tried
  if (positions == 0) return nullptr;
  Needle needle;
  const char* match = likeNeedle(pattern, patternLength, wildcard, &needle)
                          ? firstMatch(text, positions, needle)
                          : text;
  return reportMatch(match, patternLength, matchLength);
}

const char* ctAtLikeBackward(const char* text, uint32_t length, const char* pattern,
                             uint32_t patternLength, char wildcard, uint32_t* matchLength) {
  if (!fits(length, patternLength)) return nullptr;
  uint32_t positions = length - patternLength + 1;
  Needle needle;
  const char* match = likeNeedle(pattern, patternLength, wildcard, &needle)
                          ? lastMatch(text, positions, needle)
                          : text + positions - 1;
  return reportMatch(match, patternLength, matchLength);
}

const char* ctAtCharSet(const char* text, uint32_t length, const char* set, uint32_t setLength,
                        uint32_t* setIndex) {
  if (setLength == 0) return nullptr;
  for (uint32_t i = 0; i < length; i++) {
    auto* member = static_cast<const char*>(std::memchr(set, text[i], setLength));
    if (member) {
      if (setIndex) *setIndex = static_cast<uint32_t>(member - set);
      return text + i;
    }
  }
  return nullptr;
}

namespace {

using ExactSearch = const char* (*)(const char*, uint32_t, const char*, uint32_t, uint32_t*);
using LikeSearch = const char* (*)(const char*, uint32_t, const char*, uint32_t, char, uint32_t*);

const char* searchBySettings(VMEngine* vm, ExactSearch exact, LikeSearch like, const char* text,
                             uint32_t length, const char* pattern, uint32_t patternLength,
                             uint32_t* matchLength) {
  switch (vm->ct.atLikeMode) {
    case 0:
      return exact(text, length, pattern, patternLength, matchLength);
    case 1:
      return like(text, length, pattern, patternLength, vm->ct.atLikeChar, matchLength);
    default:
      return nullptr;
  }
}

}  // namespace

const char* ctSearchForward(VMEngine* vm, const char* text, uint32_t length, const char* pattern,
                            uint32_t patternLength, uint32_t* matchLength) {
  return searchBySettings(vm, ctAtForward, ctAtLikeForward, text, length, pattern, patternLength,
                          matchLength);
}

const char* ctSearchBackward(VMEngine* vm, const char* text, uint32_t length, const char* pattern,
                             uint32_t patternLength, uint32_t* matchLength) {
  return searchBySettings(vm, ctAtBackward, ctAtLikeBackward, text, length, pattern, patternLength,
                          matchLength);
}

const char* ctSearchNth(VMEngine* vm, const char* text, uint32_t length, const char* pattern,
                        uint32_t patternLength, uint32_t n, uint32_t* matchLength,
                        uint32_t* found) {
  bool multiPass = vm->ct.multiPass != 0;
  const char* start = text;
  const char* end = text + length;
  const char* match = nullptr;
  uint32_t count = 0;
  uint32_t size = 0;
  while (count < n) {
    match = ctSearchForward(vm, start, static_cast<uint32_t>(end - start), pattern, patternLength,
                            &size);
    if (!match) break;
    count++;
    start = multiPass ? match + 1 : match + size;
  }
  if (found) *found = count;
  if (!match) return nullptr;
  if (matchLength) *matchLength = size;
  return match;
}

const char* ctSearchNthOrLast(VMEngine* vm, const char* text, uint32_t length, const char* pattern,
                              uint32_t patternLength, uint32_t n, uint32_t* matchLength) {
  if (n == 0) return ctSearchBackward(vm, text, length, pattern, patternLength, matchLength);
  return ctSearchNth(vm, text, length, pattern, patternLength, n, matchLength, nullptr);
}
