// The cost of one call through the host frame: push the symbol, a nil self
// and the arguments, call through the resolved pointer, read the return item.
#include <benchmark/benchmark.h>

#include "frame/frame.h"
#include "reference.h"

namespace {

void noOperation(VMEngine*) {}

// LEN("abc")-sized work: read a string parameter, put its length.
void lengthOfText(VMEngine* vm) {
  Item* text = paramItem(vm, 1, HB_IT_STRING);
  itemPutNL(vm, returnItem(vm), text ? static_cast<int32_t>(itemStrLen(text)) : 0);
}

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
  callThroughFrame(state, lengthOfText, true);
}

BENCHMARK(BM_FrameCall_NoOp);
BENCHMARK(BM_FrameCall_LenSized);

}  // namespace
