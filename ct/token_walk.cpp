// Walking a token environment: TOKENNEXT gives the tokens one by one,
// TOKENNUM, TOKENEND and TOKENAT report on it. Each works on the environment
// passed by reference, changed in place, or else on the current one.
#include "ct/token_env.h"

namespace {

constexpr int32_t TOKENNEXT_ERROR = 3971;
constexpr int32_t TOKENAT_ERROR = 3932;

// Token `index` of the string; "" where the entry is missing or lies past the
// string, and a string shorter than the token cuts it.
void putTokenText(VMEngine* vm, CtText text, const TokenEnv& env, uint32_t index) {
  if (index >= env.entries()) return returnEmptyText(vm);
  uint32_t start = env.start(index);
  uint32_t end = env.end(index) < text.length ? env.end(index) : text.length;
  if (start >= end) return returnEmptyText(vm);
  itemPutCL(vm, returnItem(vm), text.bytes + start, end - start);
}

// Parameter n less one when it is numeric, else the current index.
uint32_t tokenIndex(VMEngine* vm, int n, const TokenEnv& env) {
  return paramIsNumCompat(vm, n) ? ctParamUnsigned(vm, n, 0) - 1 : env.current();
}

}  // namespace

KOVO_FUNC(TOKENNEXT) {
  Item* textItem = paramItem(vm, 1, HB_IT_STRING);
  if (!textItem) {
    if (!ctArgErrorSubst(vm, TOKENNEXT_ERROR, "TOKENNEXT", 3)) returnEmptyText(vm);
    return;
  }
  ChosenEnv chosen = tokenEnvFor(vm, 3, true);
  if (!chosen.found || (chosen.fromParam && chosen.env.size() < TOKEN_ENV_HEADER)) {
    ctArgErrorDefault(vm, TOKENNEXT_ERROR, "TOKENNEXT", 3);
    returnEmptyText(vm);
    return;
  }
  TokenEnv& env = chosen.env;
  bool numbered = paramIsNumCompat(vm, 2);
  uint32_t index = tokenIndex(vm, 2, env);
  if (numbered && index >= env.entries()) {
    ctArgErrorDefault(vm, TOKENNEXT_ERROR, "TOKENNEXT", 3);
    returnEmptyText(vm);
    return;
  }
  // The token is read before the index moves: the string may be the
  // environment itself.
  putTokenText(vm, ctTextOf(textItem), env, index);
  if (!numbered && index < env.count()) env.setCurrent(index + 1);
}

KOVO_FUNC(TOKENNUM) {
  ChosenEnv chosen = tokenEnvFor(vm, 1, false);
  if (!chosen.found) {
    if (!ctArgErrorSubst(vm, 3982, "TOKENNUM", 1)) itemPutNI(vm, returnItem(vm), 0);
    return;
  }
  itemPutNInt(vm, returnItem(vm), chosen.env.count());
}

KOVO_FUNC(TOKENEND) {
  ChosenEnv chosen = tokenEnvFor(vm, 1, false);
  if (!chosen.found) {
    if (!ctArgErrorSubst(vm, 3944, "TOKENEND", 1)) itemPutL(vm, returnItem(vm), true);
    return;
  }
  itemPutL(vm, returnItem(vm), chosen.env.count() <= chosen.env.current());
}

KOVO_FUNC(TOKENAT) {
  ChosenEnv chosen = tokenEnvFor(vm, 3, false);
  uint32_t index = chosen.found ? tokenIndex(vm, 2, chosen.env) : 0;
  if (!chosen.found || index >= chosen.env.entries()) {
    ctArgErrorDefault(vm, TOKENAT_ERROR, "TOKENAT", 3);
    itemPutNI(vm, returnItem(vm), 0);
    return;
  }
  uint32_t offset = paramIsTrue(vm, 1) ? chosen.env.end(index) : chosen.env.start(index);
  itemPutNInt(vm, returnItem(vm), int64_t{offset} + 1);
}
