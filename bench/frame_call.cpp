// The cost of one call through the host frame: push the symbol, a nil self
// and the arguments, call through the resolved pointer, read the return item;
// once with a function that does nothing, once with the library's LEN("abc").
#include <benchmark/benchmark.h>

#include "reference.h"

extern "C" void LEN(VMEngine*);

namespace {

void noOperation(VMEngine*) {}

void callThroughFrame(benchmark::State& state, VMFunction function, bool withArgument) {
  VMEngine* vm = benchContext();
  DynSymbol* symbol = xdynsymGet(vm, "BENCH");
  symbol->function = function;
  for (auto _ : state) {
    vmPushSymbol(vm, symbol);
    vmPushNil(vm);
    if (withArgument) itemPutCRawStatic(vm, vmPush(vm), "abc", 3);
    xvmDo(vm, withArgument ? 1 : 0);
    benchmark::DoNotOptimize(itemGetNL(&vm->stack.Return));
  }
  vmDestroy(vm);
}

void BM_FrameCall_NoOp(benchmark::State& state) {
  callThroughFrame(state, noOperation, false);
}
void BM_FrameCall_LenSized(benchmark::State& state) {
  callThroughFrame(state, LEN, true);
}

BENCHMARK(BM_FrameCall_NoOp);
BENCHMARK(BM_FrameCall_LenSized);

}  // namespace
