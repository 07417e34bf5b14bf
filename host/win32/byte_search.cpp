// The C library of Windows has no memmem: Boyer-Moore with its good-suffix
// rule stops at the first occurrence after a linear number of comparisons.
#include <algorithm>
#include <functional>

#include "host/byte_search.h"

const char* searchBytes(const char* text, size_t length, const char* pattern,
                        size_t patternLength) {
  const char* end = text + length;
  const char* found =
      std::search(text, end, std::boyer_moore_searcher(pattern, pattern + patternLength));
  return found == end && patternLength > 0 ? nullptr : found;
}
