// The one-shot tokenizer: TOKEN, NUMTOKEN, ATTOKEN, TOKENLOWER and TOKENUPPER
// scan the string from its start at every call; TOKENSEP reports the
// separators around the token that TOKEN found last.
#include <cstring>

#include "ct/ref_mode.h"
#include "ct/token_env.h"
#include "ct/token_scan.h"

namespace {

enum class TokenMode { Token, Count, Position, Lower, Upper };

struct Found {
  uint32_t count = 0;
  bool hit = false;  // the token asked for (the n-th, or the last) was reached
  uint32_t start = 0;
  uint32_t end = 0;
};

void putFallback(VMEngine* vm, TokenMode mode) {
  if (mode == TokenMode::Count || mode == TokenMode::Position) {
    itemPutNI(vm, returnItem(vm), 0);
  } else {
    returnEmptyText(vm);
  }
}

// Counts tokens up to the n-th (CT_ALL: the last). Without limits the scan
// ends where only separators remain; with a skip width and no n, at a
// separator that ends the text. Changes the first character of every
// non-empty token in `cased` when that is given.
Found scanTokens(VMEngine* vm, TokenScan& scan, uint32_t n, uint32_t skip, TokenMode mode,
                 char* cased) {
  Found found;
  while (found.count < n) {
    TokenStep token = scan.step();
    if (n == CT_ALL && skip == CT_ALL && scan.nothingLeft(token)) break;
    found.count++;
    found.start = token.start;
    found.end = scan.end(token);
    if (cased && found.end > found.start) {
      char* first = cased + found.start;
      if (mode == TokenMode::Lower) {
        strLowerCopy(vm, first, first, 1);
      } else {
        strUpperCopy(vm, first, first, 1);
      }
    }
    if (!token.separator) break;
    if (n == CT_ALL && skip != CT_ALL && scan.separatorEndsText(token)) break;
  }
  found.hit = found.count > 0 && (n == CT_ALL || found.count == n);
  return found;
}

void storeSeparator(VMEngine* vm, int32_t code, int n) {
  char character = static_cast<char>(code);
  hb_storclen(vm, &character, code < 0 ? 0 : 1, n);
}

void putSeparator(VMEngine* vm, int32_t code) {
  char character = static_cast<char>(code);
  itemPutCL(vm, returnItem(vm), &character, code < 0 ? 0 : 1);
}

void putToken(VMEngine* vm, CtText text, const Found& found, const SeparatorTrail& trail) {
  TokenState& state = tokenState(vm);
  state.tokenCalled = true;
  state.sepBefore = trail.before;
  state.sepAfter = trail.after;
  if (found.hit) {
    itemPutCL(vm, returnItem(vm), text.bytes + found.start, found.end - found.start);
  } else {
    returnEmptyText(vm);
  }
  storeSeparator(vm, trail.before, 5);
  storeSeparator(vm, trail.after, 6);
}

void tokenWorker(VMEngine* vm, TokenMode mode, int32_t subCode, const char* operation,
                 int declared) {
  Item* textItem = paramItem(vm, 1, HB_IT_STRING);
  if (!textItem) {
    if (!ctArgErrorSubst(vm, subCode, operation, declared)) putFallback(vm, mode);
    return;
  }
  CtText text = ctTextOf(textItem);
  CtText separatorText = tokenSeparators(vm, 2);
  const CtCharSet separators(separatorText.bytes, separatorText.length);
  bool counting = mode == TokenMode::Count;
  uint32_t n = counting ? CT_ALL : ctParamLimit(vm, 3);
  uint32_t skip = ctParamLimit(vm, counting ? 3 : 4);
  if (counting && skip == CT_ALL) {
    // Every run of non-separators is a token then: counted a block at a time.
    itemPutNInt(vm, returnItem(vm), separators.runsOutside(text.bytes, text.length));
    return;
  }
  char* cased = nullptr;
  if (mode == TokenMode::Lower || mode == TokenMode::Upper) {
    cased = static_cast<char*>(vmAlloc(vm, size_t{text.length} + 1));
    std::memcpy(cased, text.bytes, text.length);
  }
  SeparatorTrail trail;
  TokenScan scan(text, separators, skip, mode == TokenMode::Token ? &trail : nullptr);
  Found found = scanTokens(vm, scan, n, skip, mode, cased);
  switch (mode) {
    case TokenMode::Token:
      putToken(vm, text, found, trail);
      break;
    case TokenMode::Count:
      itemPutNInt(vm, returnItem(vm), found.count);
      break;
    case TokenMode::Position:
      itemPutNInt(vm, returnItem(vm), found.hit ? int64_t{found.start} + 1 : 0);
      break;
    case TokenMode::Lower:
    case TokenMode::Upper:
      ctReturnChanged(vm, cased, text.length);
      break;
  }
}

}  // namespace

KOVO_FUNC(TOKEN) {
  tokenWorker(vm, TokenMode::Token, 3921, "TOKEN", 6);
}

KOVO_FUNC(NUMTOKEN) {
  tokenWorker(vm, TokenMode::Count, 3642, "NUMTOKEN", 4);
}

KOVO_FUNC(ATTOKEN) {
  tokenWorker(vm, TokenMode::Position, 3182, "ATTOKEN", 4);
}

KOVO_FUNC(TOKENLOWER) {
  tokenWorker(vm, TokenMode::Lower, 3961, "TOKENLOWER", 4);
}

KOVO_FUNC(TOKENUPPER) {
  tokenWorker(vm, TokenMode::Upper, 4001, "TOKENUPPER", 4);
}

KOVO_FUNC(TOKENSEP) {
  const TokenState& state = tokenState(vm);
  bool after = paramIsTrue(vm, 1);
  int32_t code = !state.tokenCalled ? -1 : after ? state.sepAfter : state.sepBefore;
  putSeparator(vm, code);
}
