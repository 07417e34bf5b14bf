// Plain byte-loop searches without preprocessing; the C library's memchr,
// memrchr and memcmp find candidate positions.
#include "search.h"

#include <cstring>

#include "kovo/host_text.h"

namespace {

bool fits(uint32_t length, uint32_t patternLength) {
  return patternLength != 0 && patternLength <= length;
}

// Whether the pattern matches at `at`: a wildcard in the pattern matches any
// character; a wildcard in the text is an ordinary one.
bool likeAt(const char* at, const char* pattern, uint32_t patternLength, char wildcard) {
  for (uint32_t i = 0; i < patternLength; i++) {
    if (pattern[i] != wildcard && pattern[i] != at[i]) return false;
  }
  return true;
}

// Start positions [first, last] are tried from the last down.
const char* lastLike(const char* text, uint32_t last, const char* pattern, uint32_t patternLength,
                     char wildcard) {
  const char* position = text + last;
  if (pattern[0] == wildcard) {
    for (;; position--) {
      if (likeAt(position, pattern, patternLength, wildcard)) return position;
      if (position == text) return nullptr;
    }
  }
  size_t span = size_t{last} + 1;
  while (span > 0) {
    auto* candidate = static_cast<const char*>(memrchr(text, pattern[0], span));
    if (!candidate) return nullptr;
    if (likeAt(candidate, pattern, patternLength, wildcard)) return candidate;
    span = static_cast<size_t>(candidate - text);
  }
  return nullptr;
}

void setMatch(uint32_t* matchLength, uint32_t patternLength) {
  if (matchLength) *matchLength = patternLength;
}

}  // namespace

const char* ctAtForward(const char* text, uint32_t length, const char* pattern,
                        uint32_t patternLength, uint32_t* matchLength) {
  if (!fits(length, patternLength)) return nullptr;
  uint32_t position = hb_strAt(pattern, patternLength, text, length);
  if (position == 0) return nullptr;
  setMatch(matchLength, patternLength);
  return text + position - 1;
}

const char* ctAtBackward(const char* text, uint32_t length, const char* pattern,
                         uint32_t patternLength, uint32_t* matchLength) {
  if (!fits(length, patternLength)) return nullptr;
  const char* match = nullptr;
  size_t span = size_t{length} - patternLength + 1;
  while (span > 0 && !match) {
    auto* candidate = static_cast<const char*>(memrchr(text, pattern[0], span));
    if (!candidate) break;
    if (std::memcmp(candidate, pattern, patternLength) == 0) match = candidate;
    span = static_cast<size_t>(candidate - text);
  }
  if (match) setMatch(matchLength, patternLength);
  return match;
}

const char* ctAtLikeForward(const char* text, uint32_t length, const char* pattern,
                            uint32_t patternLength, char wildcard, uint32_t* matchLength) {
  if (!fits(length, patternLength)) return nullptr;
  const char* end = text + (length - patternLength);  // this last position is not tried
  for (const char* position = text; position < end; position++) {
    if (pattern[0] != wildcard) {
      position = static_cast<const char*>(
          std::memchr(position, pattern[0], static_cast<size_t>(end - position)));
      if (!position) return nullptr;
    }
    if (likeAt(position, pattern, patternLength, wildcard)) {
      setMatch(matchLength, patternLength);
      return position;
    }
  }
  return nullptr;
}

const char* ctAtLikeBackward(const char* text, uint32_t length, const char* pattern,
                             uint32_t patternLength, char wildcard, uint32_t* matchLength) {
  if (!fits(length, patternLength)) return nullptr;
  const char* match = lastLike(text, length - patternLength, pattern, patternLength, wildcard);
  if (match) setMatch(matchLength, patternLength);
  return match;
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

const char* ctSearchForward(VMEngine* vm, const char* text, uint32_t length, const char* pattern,
                            uint32_t patternLength, uint32_t* matchLength) {
  switch (vm->ct.atLikeMode) {
    case 0:
      return ctAtForward(text, length, pattern, patternLength, matchLength);
    case 1:
      return ctAtLikeForward(text, length, pattern, patternLength, vm->ct.atLikeChar, matchLength);
    default:
      return nullptr;
  }
}

const char* ctSearchBackward(VMEngine* vm, const char* text, uint32_t length, const char* pattern,
                             uint32_t patternLength, uint32_t* matchLength) {
  switch (vm->ct.atLikeMode) {
    case 0:
      return ctAtBackward(text, length, pattern, patternLength, matchLength);
    case 1:
      return ctAtLikeBackward(text, length, pattern, patternLength, vm->ct.atLikeChar, matchLength);
    default:
      return nullptr;
  }
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
