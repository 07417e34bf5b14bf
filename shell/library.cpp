#include "library.h"

#include <cctype>

bool isFunctionName(const char* name) {
  if (name[0] == '_' && name[1] == 'Z') return false;
  for (const char* p = name; *p; p++) {
    if (std::isupper(static_cast<unsigned char>(*p))) return true;
  }
  return false;
}
