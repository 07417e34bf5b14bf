// Benchmarks side by side with a reference measured in the same run: Debian's
// own Python (/usr/bin/python3), timing the equivalent operation on the same
// bytes, and a VM context for calling library functions through the frame.
#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "kovo/host_embed.h"

// Registers a benchmark whose time per iteration is what Python takes for
// `statement`. `data` is handed to Python as the bytes object `data`;
// `setup` runs once before timing. `bytes` is the work size of one run.
void registerPythonReference(const std::string& name, const std::string& data,
                             const std::string& setup, const std::string& statement, int64_t bytes);

// A context for benchmarks; errors and reports are dropped.
VMEngine* benchContext();

// Calls a VM function through a full frame, as the interpreter does: symbol,
// nil self, arguments, call, return item.
Item* benchCall(VMEngine* vm, DynSymbol* symbol, std::initializer_list<Item*> args);

// Pseudo-random lower-case text, the same for every run.
std::string randomLowercase(size_t length, uint32_t seed);

// A context with the library function under its name, and items that live
// as long as the benchmark.
class BenchFrame {
 public:
  BenchFrame() : vm_(benchContext()) {}
  BenchFrame(const BenchFrame&) = delete;
  BenchFrame& operator=(const BenchFrame&) = delete;
  ~BenchFrame() {
    for (Item* item : items_)
      xItemRelease(vm_, item);
    for (ValueCell* cell : cells_)
      cellRelease(cell);
    vmDestroy(vm_);
  }

  DynSymbol* function(const char* name, VMFunction function) {
    DynSymbol* symbol = xdynsymGet(vm_, name);
    symbol->function = function;
    return symbol;
  }
  Item* text(const std::string& bytes) {
    return keep(
        itemPutCL(vm_, itemNew(vm_, nullptr), bytes.data(), static_cast<uint32_t>(bytes.size())));
  }
  Item* number(int32_t value) { return keep(itemPutNI(vm_, itemNew(vm_, nullptr), value)); }
  Item* nil() { return keep(itemNew(vm_, nullptr)); }
  // A reference to a new variable, as @variable passes it.
  Item* reference() {
    ValueCell* cell = cellNew(vm_, nullptr);
    cells_.push_back(cell);
    return keep(itemPutRef(vm_, itemNew(vm_, nullptr), cell));
  }
  Item* call(DynSymbol* symbol, std::initializer_list<Item*> args) {
    return benchCall(vm_, symbol, args);
  }
  VMEngine* vm() const { return vm_; }
  Item* keep(Item* item) {
    items_.push_back(item);
    return item;
  }

 private:
  VMEngine* vm_;
  std::vector<Item*> items_;
  std::vector<ValueCell*> cells_;
};
