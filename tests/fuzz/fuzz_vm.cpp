#include "fuzz_vm.h"

#include <cstdio>
#include <cstdlib>

namespace {

size_t baseline = 0;

}  // namespace

VMEngine* fuzzContext() {
  static VMEngine* vm = [] {
    static const HostEvents quiet{};
    VMConfig config{&quiet, nullptr, false};
    VMEngine* created = vmCreate(&config);
    xdynsymGet(created, "FUZZED");
    baseline = vmHeapLiveBlocks(created);
    return created;
  }();
  return vm;
}

void putExactString(Item* dst, const uint8_t* data, size_t size) {
  itemPutCRawStatic(fuzzContext(), dst, reinterpret_cast<const char*>(data),
                    static_cast<uint32_t>(size));
}

void fuzzCall(VMFunction function, Item* const* args, uint32_t argc) {
  VMEngine* vm = fuzzContext();
  DynSymbol* symbol = xdynsymGet(vm, "FUZZED");
  symbol->function = function;
  vmCallFunction(vm, symbol, argc, const_cast<Item**>(args));
  itemClear(vm, &vm->stack.Return);
}

void checkNoLeak() {
  size_t live = vmHeapLiveBlocks(fuzzContext());
  if (live != baseline) {
    std::fprintf(stderr, "heap blocks left behind: %zu\n", live - baseline);
    std::abort();
  }
}

int fuzzStringReader(VMFunction function, const uint8_t* data, size_t size) {
  Item text{};
  putExactString(&text, data, size);
  Item* args[] = {&text};
  fuzzCall(function, args, 1);
  checkNoLeak();
  return 0;
}
