// Argument errors of the standard functions (the base subsystem).
#include <vector>

#include "frame.h"

namespace {

// The declared parameters as passed; a missing one is the spare nil item.
std::vector<Item*> declaredArguments(VMEngine* vm, int declared) {
  std::vector<Item*> args(static_cast<size_t>(declared));
  for (int i = 0; i < declared; i++)
    args[static_cast<size_t>(i)] = paramError(vm, i + 1);
  return args;
}

}  // namespace

void argErrorGen(VMEngine* vm, int32_t genCode, int32_t subCode, const char* operation,
                 int declared) {
  std::vector<Item*> args = declaredArguments(vm, declared);
  err_RT_BASE_SubstRArgs(vm, genCode, subCode, nullptr, operation, static_cast<uint32_t>(declared),
                         args.data());
}

void argError(VMEngine* vm, int32_t subCode, const char* operation, int declared) {
  argErrorGen(vm, EG_ARG, subCode, operation, declared);
}

void argErrorNoSubst(VMEngine* vm, int32_t subCode, const char* operation, int declared) {
  std::vector<Item*> args = declaredArguments(vm, declared);
  err_RT_BASEArgs(vm, EG_ARG, subCode, nullptr, operation, static_cast<uint32_t>(declared),
                  args.data());
}
