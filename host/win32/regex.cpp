// POSIX regular expressions on the C++ library's engine, in its POSIX grammars.
#include <regex.h>

#include <cstring>
#include <new>
#include <regex>

int regcomp(regex_t* expression, const char* pattern, int flags) {
  auto grammar = (flags & REG_EXTENDED) ? std::regex::extended : std::regex::basic;
  if (flags & REG_ICASE) grammar |= std::regex::icase;
  if (flags & REG_NOSUB) grammar |= std::regex::nosubs;
  try {
    auto* compiled = new std::regex(pattern, grammar);
    expression->compiled = compiled;
    expression->re_nsub = compiled->mark_count();
    return 0;
  } catch (const std::regex_error&) {
    expression->compiled = nullptr;
    return REG_BADPAT;
  } catch (const std::bad_alloc&) {
    expression->compiled = nullptr;
    return REG_ESPACE;
  }
}

int regexec(const regex_t* expression, const char* text, size_t matchCount, regmatch_t* matches,
            int) {
  if (!expression->compiled) return REG_BADPAT;
  const auto& compiled = *static_cast<const std::regex*>(expression->compiled);
  std::cmatch found;
  if (!std::regex_search(text, found, compiled)) return REG_NOMATCH;
  for (size_t i = 0; i < matchCount; i++) {
    bool matched = matches && i < found.size() && found[i].matched;
    if (!matches) break;
    matches[i].rm_so = matched ? static_cast<regoff_t>(found.position(i)) : -1;
    matches[i].rm_eo = matched ? static_cast<regoff_t>(found.position(i) + found.length(i)) : -1;
  }
  return 0;
}

void regfree(regex_t* expression) {
  delete static_cast<std::regex*>(expression->compiled);
  expression->compiled = nullptr;
}

size_t regerror(int code, const regex_t*, char* buffer, size_t size) {
  const char* text = code == REG_NOMATCH  ? "no match"
                     : code == REG_ESPACE ? "out of memory"
                                          : "invalid regular expression";
  if (buffer && size > 0) {
    std::strncpy(buffer, text, size - 1);
    buffer[size - 1] = '\0';
  }
  return std::strlen(text) + 1;
}
