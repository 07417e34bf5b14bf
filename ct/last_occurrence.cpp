#include "last_occurrence.h"

#include <cstdint>

namespace {

// Bytes read from the end: position 0 is the last byte. The two-way search
// below is the ordinary forward one; run on the reversed text and pattern its
// first match is the last one of the originals.
class Reversed {
 public:
  Reversed(const char* bytes, size_t length) : end_(bytes + length - 1) {}
  unsigned char operator[](size_t i) const { return static_cast<unsigned char>(*(end_ - i)); }

 private:
  const char* end_;
};

// The maximal suffix of the pattern for one byte order (`greater` flips it);
// returns its start and sets *period to the period it found.
size_t maximalSuffix(const Reversed& pattern, size_t length, bool greater, size_t* period) {
  size_t suffix = SIZE_MAX;  // one before the start: the arithmetic below wraps to it on purpose
  size_t j = 0;
  size_t k = 1;
  size_t p = 1;
  while (j + k < length) {
    unsigned char a = pattern[j + k];
    unsigned char b = pattern[suffix + k];
    if (greater ? a > b : a < b) {
      j += k;
      k = 1;
      p = j - suffix;
    } else if (a == b) {
      if (k != p) {
        k++;
      } else {
        j += p;
        k = 1;
      }
    } else {
      suffix = j++;
      k = p = 1;
    }
  }
  *period = p;
  return suffix + 1;
}

// The critical factorization: the split point of the pattern (its right half
// starts there) and, in *period, the period of the right half.
size_t criticalSplit(const Reversed& pattern, size_t length, size_t* period) {
  size_t lessPeriod = 0;
  size_t greaterPeriod = 0;
  size_t less = maximalSuffix(pattern, length, false, &lessPeriod);
  size_t greater = maximalSuffix(pattern, length, true, &greaterPeriod);
  if (less >= greater) {
    *period = lessPeriod;
    return less;
  }
  *period = greaterPeriod;
  return greater;
}

bool leftHalfRepeats(const Reversed& pattern, size_t split, size_t period) {
  for (size_t i = 0; i < split; i++) {
    if (pattern[i] != pattern[i + period]) return false;
  }
  return true;
}

// The first position of the reversed pattern in the reversed text, or SIZE_MAX.
size_t twoWay(const Reversed& text, size_t length, const Reversed& pattern, size_t patternLength) {
  size_t period = 0;
  size_t split = criticalSplit(pattern, patternLength, &period);
  size_t last = length - patternLength;
  if (leftHalfRepeats(pattern, split, period)) {
    // A periodic pattern: what matched of the period is remembered, so no
    // byte of the text is compared twice from the right half on.
    size_t memory = 0;
    for (size_t j = 0; j <= last;) {
      size_t i = split > memory ? split : memory;
      while (i < patternLength && pattern[i] == text[i + j])
        i++;
      if (i < patternLength) {
        j += i - split + 1;
        memory = 0;
        continue;
      }
      i = split;
      while (i > memory && pattern[i - 1] == text[i - 1 + j])
        i--;
      if (i <= memory) return j;
      j += period;
      memory = patternLength - period;
    }
    return SIZE_MAX;
  }
  size_t shift = (split > patternLength - split ? split : patternLength - split) + 1;
  for (size_t j = 0; j <= last;) {
    size_t i = split;
    while (i < patternLength && pattern[i] == text[i + j])
      i++;
    if (i < patternLength) {
      j += i - split + 1;
      continue;
    }
    i = split;
    while (i > 0 && pattern[i - 1] == text[i - 1 + j])
      i--;
    if (i == 0) return j;
    j += shift;
  }
  return SIZE_MAX;
}

}  // namespace

const char* lastOccurrence(const char* text, size_t length, const char* pattern,
                           size_t patternLength) {
  if (patternLength == 0 || patternLength > length) return nullptr;
  size_t found =
      twoWay(Reversed(text, length), length, Reversed(pattern, patternLength), patternLength);
  return found == SIZE_MAX ? nullptr : text + (length - found - patternLength);
}
