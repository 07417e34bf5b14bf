// Script-visible functions of the error machinery and the text tools' error mode.
#include <vector>

#include "ct_state.h"
#include "frame.h"
#include "state.h"

namespace {

const StateSlot<CtState> ctSlot;

// __ERRRT_BASE and __ERRRT_SBASE: general code, subcode, description,
// operation, argument count and the one argument a program can pass.
struct ScriptError {
  int32_t genCode;
  int32_t subCode;
  const char* description;
  const char* operation;
  uint32_t argc;
  Item* args[1];
};

ScriptError readScriptError(VMEngine* vm) {
  ScriptError error{};
  error.genCode = paramGetNL(vm, 1);
  error.subCode = paramGetNL(vm, 2);
  error.description = paramXPChar(vm, 3);
  error.operation = paramXPChar(vm, 4);
  error.argc = static_cast<uint16_t>(paramGetNI(vm, 5));
  error.args[0] = paramCount(vm) >= 6 ? paramItem(vm, 6, HB_IT_ANY) : nullptr;
  return error;
}

// Only one argument item can be passed; further counted arguments are nil.
std::vector<Item*> scriptErrorArgs(const ScriptError& error) {
  std::vector<Item*> args(error.argc, nullptr);
  if (error.argc > 0) args[0] = error.args[0];
  return args;
}

}  // namespace

CtState& ctState(VMEngine* vm) {
  return ctSlot(vm);
}

KOVO_FUNC(CSETARGERR) {
  int32_t oldMode = ctArgErrorMode(vm);
  if (paramCount(vm) >= 1) {
    int32_t mode = paramIsNumCompat(vm, 1) ? paramGetNI(vm, 1) : -2;
    if (mode >= -1 && mode <= 3) {
      ctSetArgErrorMode(vm, mode);
    } else if (oldMode != -1) {
      ctRaiseError(vm, oldMode, EG_ARG, 1032, nullptr, "CSETARGERR", 0, EF_CANDEFAULT, 1,
                   paramError(vm, 1));
    }
  }
  itemPutNI(vm, returnItem(vm), oldMode);
}

KOVO_FUNC(CTCINIT) {
  CtState& state = ctState(vm);
  if (state.initialised == 0) state.initialised = 1;
  itemPutL(vm, returnItem(vm), state.initialised != 0);
}

KOVO_FUNC(CTCEXIT) {
  ctState(vm).initialised = 0;
}

KOVO_FUNC(__ERRINHANDLER) {
  err_Internal(vm, 9001, nullptr, nullptr);
}

KOVO_FUNC(ERRORBLOCK) {
  Item old{};
  itemCopy(vm, &old, &vm->error.errorBlock);
  Item* block = paramItem(vm, 1, HB_IT_BLOCK);
  if (block) itemCopy(vm, &vm->error.errorBlock, block);
  itemForwardValue(vm, returnItem(vm), &old);
}

KOVO_FUNC(DOSERROR) {
  int32_t oldCode = vm->error.dosError;
  if (paramIsNumCompat(vm, 1)) vm->error.dosError = paramGetNI(vm, 1);
  itemPutNI(vm, returnItem(vm), oldCode);
}

KOVO_FUNC(__ERRRT_BASE) {
  ScriptError error = readScriptError(vm);
  std::vector<Item*> args = scriptErrorArgs(error);
  err_RT_BASEArgs(vm, error.genCode, error.subCode, error.description, error.operation, error.argc,
                  args.data());
}

KOVO_FUNC(__ERRRT_SBASE) {
  ScriptError error = readScriptError(vm);
  std::vector<Item*> args = scriptErrorArgs(error);
  err_RT_BASE_SubstRArgs(vm, error.genCode, error.subCode, error.description, error.operation,
                         error.argc, args.data());
}
