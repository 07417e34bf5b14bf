// Runtime errors: error objects, their launch through the thread's error
// block, and the shorthand forms that the library uses.
#include <cstdarg>
#include <cstdlib>
#include <cstring>

#include "internals.h"
#include "kovo/host_embed.h"

namespace {

// Errors raised while the error block runs are handed to it again, up to this
// depth; deeper ones take the default, so a handler that fails itself ends.
constexpr uint32_t MAX_HANDLER_DEPTH = 16;

Item* errorSlot(Item* error, const char* name) {
  BaseArray* array = error->item.asArray.value;
  const Class* cls = array->cls;
  for (uint32_t i = 0; i < cls->ivarCount; i++) {
    if (std::strcmp(cls->ivars[i], name) == 0) return &array->items[i];
  }
  return nullptr;
}

bool hasHandlerBlock(VMEngine* vm) {
  return (vm->error.errorBlock.type & HB_IT_BLOCK) && vm->error.handlerDepth < MAX_HANDLER_DEPTH;
}

// Runs the error block with the error and moves its value into `result`. The
// return item is kept as it was: the function that raised the error may have
// put its result there already.
void runHandler(VMEngine* vm, Item* error, Item* result) {
  Item* tries = errorSlot(error, "TRIES");
  itemPutNI(vm, tries, itemGetNI(tries) + 1);
  Item* saved = vmPush(vm);
  itemForwardValue(vm, saved, &vm->stack.Return);
  vm->error.handlerDepth++;
  itemForwardValue(vm, result, vmEvalBlockV(vm, &vm->error.errorBlock, 1, error));
  vm->error.handlerDepth--;
  itemForwardValue(vm, &vm->stack.Return, saved);
  vm->stack.pos--;
}

void reportUnhandled(VMEngine* vm, const Item* error) {
  if (vm->events && vm->events->unhandledError) {
    vm->events->unhandledError(vm, vm->eventCargo, error);
  }
}

Item* newBaseError(VMEngine* vm, int32_t genCode, int32_t subCode, const char* description,
                   const char* operation, uint32_t flags, uint32_t argc, Item* const* argv) {
  Item* error =
      err_RT_New(vm, ES_ERROR, ERR_SS_BASE, genCode, subCode, description, operation, 0, flags);
  errPutArgsArray(vm, error, argc, argv);
  return error;
}

uint16_t launchAndRelease(VMEngine* vm, Item* error) {
  uint16_t action = err_Launch(vm, error);
  xItemRelease(vm, error);
  return action;
}

}  // namespace

Item* err_RT_New(VMEngine* vm, int32_t severity, const char* subSystem, int32_t genCode,
                 int32_t subCode, const char* description, const char* operation, int32_t osCode,
                 uint32_t flags) {
  Item* error = errNew(vm);
  if (!description || !*description) description = errDescription(genCode);
  itemPutNI(vm, errorSlot(error, "SEVERITY"), severity);
  itemPutC(vm, errorSlot(error, "SUBSYSTEM"), subSystem ? subSystem : "");
  itemPutNI(vm, errorSlot(error, "GENCODE"), genCode);
  itemPutNI(vm, errorSlot(error, "SUBCODE"), subCode);
  itemPutC(vm, errorSlot(error, "DESCRIPTION"), description);
  itemPutC(vm, errorSlot(error, "OPERATION"), operation ? operation : "");
  itemPutNI(vm, errorSlot(error, "OSCODE"), osCode);
  itemPutL(vm, errorSlot(error, "CANRETRY"), (flags & EF_CANRETRY) != 0);
  itemPutL(vm, errorSlot(error, "CANSUBSTITUTE"), (flags & EF_CANSUBSTITUTE) != 0);
  itemPutL(vm, errorSlot(error, "CANDEFAULT"), (flags & EF_CANDEFAULT) != 0);
  return error;
}

Item* err_RT_New_Subst(VMEngine* vm, int32_t severity, const char* subSystem, int32_t genCode,
                       int32_t subCode, const char* description, const char* operation,
                       int32_t osCode, uint32_t flags) {
  return err_RT_New(vm, severity, subSystem, genCode, subCode, description, operation, osCode,
                    flags | EF_CANSUBSTITUTE);
}

void errPutArgsArray(VMEngine* vm, Item* error, uint32_t argc, Item* const* argv) {
  if (argc == 0) return;
  Item* args = itemArrayNew(vm, argc);
  for (uint32_t i = 0; i < argc; i++) {
    if (argv[i]) itemArrayPut(vm, args, i + 1, argv[i]);
  }
  itemForwardValue(vm, errorSlot(error, "ARGS"), args);
  xItemRelease(vm, args);
}

uint16_t err_Launch(VMEngine* vm, Item* error) {
  if (!hasHandlerBlock(vm)) {
    reportUnhandled(vm, error);
    return E_DEFAULT;
  }
  Item result{};
  runHandler(vm, error, &result);
  bool retry = result.type == HB_IT_LOGICAL && result.item.asLogical.value &&
               itemGetL(errorSlot(error, "CANRETRY"));
  itemClear(vm, &result);
  return retry ? E_RETRY : E_DEFAULT;
}

Item* err_LaunchSubst(VMEngine* vm, Item* error) {
  if (!hasHandlerBlock(vm)) {
    reportUnhandled(vm, error);
    return nullptr;
  }
  Item* substitute = itemNew(vm, nullptr);
  runHandler(vm, error, substitute);
  return substitute;
}

void err_RT_BASE_SubstRArgs(VMEngine* vm, int32_t genCode, int32_t subCode, const char* description,
                            const char* operation, uint32_t argc, Item* const* argv) {
  Item* substitute =
      err_RT_BASE_SubstArgs(vm, genCode, subCode, description, operation, argc, argv);
  itemReturn(vm, substitute);
  xItemRelease(vm, substitute);
}

Item* err_RT_BASE_SubstArgs(VMEngine* vm, int32_t genCode, int32_t subCode, const char* description,
                            const char* operation, uint32_t argc, Item* const* argv) {
  Item* error =
      newBaseError(vm, genCode, subCode, description, operation, EF_CANSUBSTITUTE, argc, argv);
  Item* substitute = err_LaunchSubst(vm, error);
  xItemRelease(vm, error);
  return substitute;
}

uint16_t err_RT_BASEArgs(VMEngine* vm, int32_t genCode, int32_t subCode, const char* description,
                         const char* operation, uint32_t argc, Item* const* argv) {
  return launchAndRelease(
      vm, newBaseError(vm, genCode, subCode, description, operation, EF_NONE, argc, argv));
}

void err_RT_BASE_SubstR(VMEngine* vm, int32_t genCode, int32_t subCode, const char* description,
                        const char* operation, uint32_t argc, ...) {
  GATHER_ITEMS(argv, argc);
  err_RT_BASE_SubstRArgs(vm, genCode, subCode, description, operation, argc, argv.data());
}

Item* err_RT_BASE_Subst(VMEngine* vm, int32_t genCode, int32_t subCode, const char* description,
                        const char* operation, uint32_t argc, ...) {
  GATHER_ITEMS(argv, argc);
  return err_RT_BASE_SubstArgs(vm, genCode, subCode, description, operation, argc, argv.data());
}

uint16_t err_RT_BASE(VMEngine* vm, int32_t genCode, int32_t subCode, const char* description,
                     const char* operation, uint32_t argc, ...) {
  GATHER_ITEMS(argv, argc);
  return err_RT_BASEArgs(vm, genCode, subCode, description, operation, argc, argv.data());
}

uint16_t err_RT_BASE_Ext1(VMEngine* vm, int32_t genCode, int32_t subCode, const char* description,
                          const char* operation, int32_t osCode, uint32_t flags, uint32_t argc,
                          ...) {
  GATHER_ITEMS(argv, argc);
  Item* error = err_RT_New(vm, ES_ERROR, ERR_SS_BASE, genCode, subCode, description, operation,
                           osCode, flags);
  errPutArgsArray(vm, error, argc, argv.data());
  return launchAndRelease(vm, error);
}

uint16_t err_RT_TERM(VMEngine* vm, int32_t genCode, int32_t subCode, const char* description,
                     const char* fileName, int32_t osCode, uint32_t flags) {
  Item* error =
      err_RT_New(vm, ES_ERROR, ERR_SS_TERM, genCode, subCode, description, "", osCode, flags);
  itemPutC(vm, errorSlot(error, "FILENAME"), fileName ? fileName : "");
  return launchAndRelease(vm, error);
}

uint16_t err_RT_DBCMD(VMEngine* vm, int32_t genCode, int32_t subCode, const char* description,
                      const char* operation) {
  return launchAndRelease(vm, err_RT_New(vm, ES_ERROR, ERR_SS_DBCMD, genCode, subCode, description,
                                         operation, 0, EF_NONE));
}

uint16_t errRaise(VMEngine* vm, int32_t code, const char* description, const char* operation) {
  return launchAndRelease(
      vm, err_RT_New(vm, ES_ERROR, "KOVO", code, 0, description, operation, 0, EF_CANDEFAULT));
}

void err_Internal(VMEngine* vm, int32_t code, const char* text1, const char* text2) {
  if (vm && vm->events && vm->events->internalError) {
    vm->events->internalError(vm, vm->eventCargo, code, text1 ? text1 : "", text2 ? text2 : "");
  }
  std::abort();
}
