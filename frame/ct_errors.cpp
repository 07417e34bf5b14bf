// Argument errors of the text tools: raised under the thread's switchable
// error mode, with the subsystem "CT".
#include <cstdarg>
#include <vector>

#include "ct_state.h"
#include "frame.h"

namespace {

struct Raised {
  uint32_t action;
  Item* substitute;
};

// Creates the error, gives it its arguments through the "_ARGS" message as a
// program would, and launches it.
Raised raise(VMEngine* vm, int32_t severity, int32_t genCode, int32_t subCode,
             const char* description, const char* operation, int32_t osCode, uint32_t flags,
             uint32_t argc, Item* const* argv, bool substitute) {
  Item* error =
      err_RT_New(vm, severity, "CT", genCode, subCode, description, operation, osCode, flags);
  Item* args = itemArrayNew(vm, argc);
  for (uint32_t i = 0; i < argc; i++)
    itemArrayPut(vm, args, i + 1, argv[i]);
  // The message send leaves its value in the return item, where the calling
  // function may already have put its result.
  Item* savedReturn = itemNew(vm, returnItem(vm));
  vmPushSymbol(vm, xdynsymGet(vm, "_ARGS"));
  itemCopy(vm, vmPush(vm), error);
  itemCopy(vm, vmPush(vm), args);
  xvmDo(vm, 1);
  itemForwardValue(vm, returnItem(vm), savedReturn);
  xItemRelease(vm, savedReturn);
  xItemRelease(vm, args);
  Raised raised{0, nullptr};
  if (substitute) {
    raised.substitute = err_LaunchSubst(vm, error);
  } else {
    raised.action = err_Launch(vm, error);
  }
  xItemRelease(vm, error);
  return raised;
}

std::vector<Item*> variadicItems(uint32_t argc, va_list args) {
  std::vector<Item*> items(argc);
  for (uint32_t i = 0; i < argc; i++)
    items[i] = va_arg(args, Item*);
  return items;
}

std::vector<Item*> declaredArguments(VMEngine* vm, int declared) {
  std::vector<Item*> args(static_cast<size_t>(declared));
  for (int i = 0; i < declared; i++) {
    Item* item = paramItem(vm, i + 1, HB_IT_ANY);
    if (!item) {
      itemClear(vm, &vm->ct.nilItem);
      item = &vm->ct.nilItem;
    }
    args[static_cast<size_t>(i)] = item;
  }
  return args;
}

}  // namespace

// Both raisers take the same arguments and differ only in what they hand back.
#define RAISE_WITH_TRAILING_ITEMS(substitute)                                                  \
  va_list args;                                                                                \
  va_start(args, argc);                                                                        \
  std::vector<Item*> argv = variadicItems(argc, args);                                         \
  va_end(args);                                                                                \
  Raised raised = raise(vm, severity, genCode, subCode, description, operation, osCode, flags, \
                        argc, argv.data(), substitute)

uint32_t ctRaiseError(VMEngine* vm, int32_t severity, int32_t genCode, int32_t subCode,
                      const char* description, const char* operation, int32_t osCode,
                      uint32_t flags, uint32_t argc, ...) {
  RAISE_WITH_TRAILING_ITEMS(false);
  return raised.action;
}

Item* ctRaiseErrorSubst(VMEngine* vm, int32_t severity, int32_t genCode, int32_t subCode,
                        const char* description, const char* operation, int32_t osCode,
                        uint32_t flags, uint32_t argc, ...) {
  RAISE_WITH_TRAILING_ITEMS(true);
  return raised.substitute;
}

int32_t ctArgErrorMode(VMEngine* vm) {
  return ctState(vm).argErrorMode;
}

void ctSetArgErrorMode(VMEngine* vm, int32_t mode) {
  ctState(vm).argErrorMode = mode;
}

bool ctArgErrorSubst(VMEngine* vm, int32_t subCode, const char* operation, int declared) {
  int32_t mode = ctArgErrorMode(vm);
  if (mode == -1) return false;
  std::vector<Item*> args = declaredArguments(vm, declared);
  Item* substitute = raise(vm, mode, EG_ARG, subCode, nullptr, operation, 0, EF_CANSUBSTITUTE,
                           static_cast<uint32_t>(declared), args.data(), true)
                         .substitute;
  if (!substitute) return false;
  itemReturn(vm, substitute);
  xItemRelease(vm, substitute);
  return true;
}

void ctErrorDefaultGen(VMEngine* vm, int32_t genCode, int32_t subCode, const char* operation,
                       int declared) {
  int32_t mode = ctArgErrorMode(vm);
  if (mode == -1) return;
  std::vector<Item*> args = declaredArguments(vm, declared);
  raise(vm, mode, genCode, subCode, nullptr, operation, 0, EF_CANDEFAULT,
        static_cast<uint32_t>(declared), args.data(), false);
}

void ctArgErrorDefault(VMEngine* vm, int32_t subCode, const char* operation, int declared) {
  ctErrorDefaultGen(vm, EG_ARG, subCode, operation, declared);
}
