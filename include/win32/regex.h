// The POSIX regular expressions that the host offers on Windows, where the C
// library has none: the calls and flags the library uses, exported by the
// host VM layer.
#pragma once

#include <cstddef>

#include "kovo/export.h"

enum {
  REG_EXTENDED = 1,
  REG_ICASE = 2,
  REG_NOSUB = 4,
  REG_NEWLINE = 8,
};
enum {
  REG_NOMATCH = 1,
  REG_BADPAT = 2,
  REG_ESPACE = 12,
};

typedef int regoff_t;

struct regmatch_t {
  regoff_t rm_so;
  regoff_t rm_eo;
};

struct regex_t {
  size_t re_nsub;
  void* compiled;  // the compiled expression, owned until regfree
};

extern "C" {
KOVO_EXPORT int regcomp(regex_t* expression, const char* pattern, int flags);
KOVO_EXPORT int regexec(const regex_t* expression, const char* text, size_t matchCount,
                        regmatch_t* matches, int flags);
KOVO_EXPORT void regfree(regex_t* expression);
KOVO_EXPORT size_t regerror(int code, const regex_t* expression, char* buffer, size_t size);
}
