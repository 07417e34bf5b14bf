// The incremental tokenizer's environments: TOKENINIT scans a string into
// one, TOKENEXIT drops the current one, SAVETOKEN and RESTTOKEN hand it over
// as a string and take it back.
#include <cstring>

#include "ct/token_env.h"
#include "ct/token_scan.h"

namespace {

constexpr int32_t TOKENINIT_ERROR = 3954;
constexpr int32_t RESTTOKEN_ERROR = 3851;

// TOKENINIT without a string: back to the first token of the environment in
// parameter 4 or of the current one.
void rewind(VMEngine* vm) {
  ChosenEnv chosen = tokenEnvFor(vm, 4, true);
  if (!chosen.found) {
    if (!ctArgErrorSubst(vm, TOKENINIT_ERROR, "TOKENINIT", 4)) itemPutL(vm, returnItem(vm), false);
    return;
  }
  bool hasTokens = chosen.env.count() > 0;
  if (hasTokens) chosen.env.setCurrent(0);
  itemPutL(vm, returnItem(vm), hasTokens);
}

void putEnvString(VMEngine* vm, unsigned char* env, uint32_t size) {
  if (!env) {
    returnEmptyText(vm);
    return;
  }
  TokenEnv view(env, size);
  itemPutCPtr(vm, returnItem(vm), reinterpret_cast<char*>(env), view.savedLength());
}

}  // namespace

KOVO_FUNC(TOKENINIT) {
  Item* textItem = paramItem(vm, 1, HB_IT_STRING);
  if (!textItem) {
    rewind(vm);
    return;
  }
  uint32_t size = 0;
  unsigned char* env =
      tokenEnvBuild(vm, ctTextOf(textItem), tokenSeparators(vm, 2), ctParamLimit(vm, 3), &size);
  if (!env) {
    ctErrorDefaultGen(vm, EG_MEM, TOKENINIT_ERROR, "TOKENINIT", 4);
    itemPutL(vm, returnItem(vm), false);
    return;
  }
  if (paramIsByRef(vm, 4)) {
    hb_storclenAdopt(vm, reinterpret_cast<char*>(env), size, 4);
  } else {
    uint32_t oldSize = 0;
    vmFree(vm, tokenSwapEnv(vm, env, size, &oldSize));
  }
  itemPutL(vm, returnItem(vm), true);
}

KOVO_FUNC(TOKENEXIT) {
  uint32_t oldSize = 0;
  unsigned char* old = tokenSwapEnv(vm, nullptr, 0, &oldSize);
  vmFree(vm, old);
  itemPutL(vm, returnItem(vm), old != nullptr);
}

KOVO_FUNC(SAVETOKEN) {
  const TokenState& state = tokenState(vm);
  TokenEnv env(state.env, state.envSize);
  itemPutCL(vm, returnItem(vm), env.bytes(), state.env ? env.savedLength() : 0);
}

// The string is taken as it is; the environment's readers never go outside it.
KOVO_FUNC(RESTTOKEN) {
  Item* textItem = paramItem(vm, 1, HB_IT_STRING);
  if (!textItem) {
    if (!ctArgErrorSubst(vm, RESTTOKEN_ERROR, "RESTTOKEN", 1)) returnEmptyText(vm);
    return;
  }
  CtText text = ctTextOf(textItem);
  unsigned char* env = nullptr;
  if (text.length > 0) {
    env = static_cast<unsigned char*>(vmTryAlloc(vm, size_t{text.length} + 1));
    if (!env) {
      ctErrorDefaultGen(vm, EG_MEM, RESTTOKEN_ERROR, "RESTTOKEN", 1);
      returnEmptyText(vm);
      return;
    }
    std::memcpy(env, text.bytes, text.length);
  }
  uint32_t oldSize = 0;
  unsigned char* old = tokenSwapEnv(vm, env, text.length, &oldSize);
  putEnvString(vm, old, oldSize);
}
