// Tokens of a text split at one delimiter byte: __STRTOKEN, __STRTKPTR,
// __STRTOKENCOUNT.
//
// The delimiter is the first byte of the delimiter argument, a blank when
// that is missing, empty or no string. With the blank, tokens are the runs of
// non-blank bytes: blanks before, between and after them separate but make no
// tokens ("  a  b " holds "a" and "b"). Any other delimiter separates at
// every occurrence, so a text holds one token more than it has delimiters,
// empty ones included ("a,,b," holds "a", "", "b" and ""). The empty text
// holds no token.
#include <cstring>

#include "str_result.h"

namespace {

struct Token {
  uint32_t start;
  uint32_t length;
};

char delimiterParam(VMEngine* vm, int n) {
  const Item* delimiter = paramItem(vm, n, HB_IT_STRING);
  return delimiter && itemStrLen(delimiter) > 0 ? itemStrPtr(delimiter)[0] : ' ';
}

// The token that starts at byte `from` (after the blanks there, for the
// blank delimiter); false when none is left.
bool tokenFrom(const Item* text, uint64_t from, char delimiter, Token* token) {
  const char* bytes = itemStrPtr(text);
  uint32_t length = itemStrLen(text);
  if (delimiter == ' ') {
    while (from < length && bytes[from] == ' ')
      from++;
    if (from >= length) return false;
  } else if (from > length || length == 0) {
    return false;
  }
  auto* stop = static_cast<const char*>(std::memchr(bytes + from, delimiter, length - from));
  uint32_t end = stop ? static_cast<uint32_t>(stop - bytes) : length;
  *token = {static_cast<uint32_t>(from), end - static_cast<uint32_t>(from)};
  return true;
}

// Where the search for the token after `token` starts: behind its delimiter.
uint64_t afterToken(const Token& token) {
  return uint64_t{token.start} + token.length + 1;
}

}  // namespace

// __STRTOKEN(text, n, [delimiter]): token n (from 1); the empty text when
// there is no such token or the arguments are of other types.
KOVO_FUNC(__STRTOKEN) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  if (!text || !paramIsNumCompat(vm, 2)) return returnEmptyText(vm);
  int32_t index = paramGetNL(vm, 2);
  char delimiter = delimiterParam(vm, 3);
  Token token{0, 0};
  uint64_t from = 0;
  for (int32_t i = 0; i < index; i++) {
    if (!tokenFrom(text, from, delimiter, &token)) return returnEmptyText(vm);
    from = afterToken(token);
  }
  if (index < 1) return returnEmptyText(vm);
  returnSlice(vm, text, token.start, token.length);
}

// __STRTKPTR(text, @offset, [delimiter]): the token found from byte `offset`
// on (0 is the start; no number counts as 0). The offset variable receives
// the offset behind the token and its delimiter, ready for the next call;
// when no token is left the result is the empty text and the offset becomes
// the length plus one, so a loop runs while the offset is not beyond the
// length.
KOVO_FUNC(__STRTKPTR) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  if (!text) return returnEmptyText(vm);
  int64_t offset = paramNumberOr(vm, 2, 0);
  Token token{0, 0};
  uint64_t next = uint64_t{itemStrLen(text)} + 1;
  if (tokenFrom(text, offset < 0 ? 0 : static_cast<uint64_t>(offset), delimiterParam(vm, 3),
                &token)) {
    next = afterToken(token);
    returnSlice(vm, text, token.start, token.length);
  } else {
    returnEmptyText(vm);
  }
  hb_stornl(vm, static_cast<int32_t>(next), 2);
}

// __STRTOKENCOUNT(text, [delimiter]): the number of tokens; 0 for anything
// that is no string.
KOVO_FUNC(__STRTOKENCOUNT) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  int32_t count = 0;
  if (text) {
    char delimiter = delimiterParam(vm, 2);
    Token token{0, 0};
    for (uint64_t from = 0; tokenFrom(text, from, delimiter, &token); from = afterToken(token))
      count++;
  }
  itemPutNL(vm, returnItem(vm), count);
}
