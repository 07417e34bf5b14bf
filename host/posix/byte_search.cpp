#include "host/byte_search.h"

#include <cstring>

const char* searchBytes(const char* text, size_t length, const char* pattern,
                        size_t patternLength) {
  return static_cast<const char*>(memmem(text, length, pattern, patternLength));
}
