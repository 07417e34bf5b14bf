// The string functions on 16-byte and 1 MiB texts, called through the frame,
// beside Python's bytes methods on the same data.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "reference.h"

extern "C" {
void ALLTRIM(VMEngine*);
void SUBSTR(VMEngine*);
void PADR(VMEngine*);
void UPPER(VMEngine*);
void STRTRAN(VMEngine*);
void REPLICATE(VMEngine*);
void RAT(VMEngine*);
}

namespace {

constexpr uint32_t SEED = 11;
constexpr int64_t LONG_TEXT = 1 << 20;

// A context whose symbol calls the function under test, and the argument
// items it is given.
class Bench {
 public:
  explicit Bench(VMFunction function) : vm_(benchContext()), symbol_(xdynsymGet(vm_, "BENCH")) {
    symbol_->function = function;
  }
  ~Bench() {
    for (Item* item : items_)
      xItemRelease(vm_, item);
    vmDestroy(vm_);
  }
  Item* text(const std::string& bytes) {
    return keep(
        itemPutCL(vm_, itemNew(vm_, nullptr), bytes.data(), static_cast<uint32_t>(bytes.size())));
  }
  Item* number(int32_t value) { return keep(itemPutNL(vm_, itemNew(vm_, nullptr), value)); }
  void run(benchmark::State& state, std::initializer_list<Item*> args, int64_t bytes) {
    for (auto _ : state)
      benchmark::DoNotOptimize(benchCall(vm_, symbol_, args));
    state.SetBytesProcessed(state.iterations() * bytes);
  }

 private:
  Item* keep(Item* item) {
    items_.push_back(item);
    return item;
  }
  VMEngine* vm_;
  DynSymbol* symbol_;
  std::vector<Item*> items_;
};

std::string sample(int64_t length) {
  return randomLowercase(static_cast<size_t>(length), SEED);
}

void BM_Alltrim(benchmark::State& state) {
  Bench bench(ALLTRIM);
  int64_t length = state.range(0);
  Item* text = bench.text("  " + sample(length - 4) + "  ");
  bench.run(state, {text}, length);
}

void BM_Substr(benchmark::State& state) {
  Bench bench(SUBSTR);
  int64_t length = state.range(0);
  Item* text = bench.text(sample(length));
  bench.run(state, {text, bench.number(2), bench.number(static_cast<int32_t>(length - 2))}, length);
}

void BM_Padr(benchmark::State& state) {
  Bench bench(PADR);
  int64_t length = state.range(0);
  Item* text = bench.text(sample(length));
  bench.run(state, {text, bench.number(static_cast<int32_t>(2 * length))}, 2 * length);
}

void BM_Upper(benchmark::State& state) {
  Bench bench(UPPER);
  int64_t length = state.range(0);
  bench.run(state, {bench.text(sample(length))}, length);
}

void BM_Strtran(benchmark::State& state) {
  Bench bench(STRTRAN);
  int64_t length = state.range(0);
  bench.run(state, {bench.text(sample(length)), bench.text("ab"), bench.text("XYZ")}, length);
}

void BM_Replicate_16MiB(benchmark::State& state) {
  Bench bench(REPLICATE);
  bench.run(state, {bench.text(sample(16)), bench.number(1 << 20)}, 16 << 20);
}

// The backward search where every start position looks like a match at its
// first byte ("ab"), and where every one passes the two-byte filter and the
// comparison fails only near the pattern's end ("a...aba", 1 KiB).
constexpr int64_t RUN_OF_A = 16 << 20;
const std::string LONG_PERIODIC_PATTERN = std::string(1021, 'a') + "aba";

void BM_Rat_InRunOfA(benchmark::State& state, const std::string& pattern) {
  Bench bench(RAT);
  bench.run(state, {bench.text(pattern), bench.text(std::string(RUN_OF_A, 'a'))}, RUN_OF_A);
}

BENCHMARK(BM_Alltrim)->Arg(16)->Arg(LONG_TEXT);
BENCHMARK(BM_Substr)->Arg(16)->Arg(LONG_TEXT);
BENCHMARK(BM_Padr)->Arg(16)->Arg(LONG_TEXT);
BENCHMARK(BM_Upper)->Arg(16)->Arg(LONG_TEXT);
BENCHMARK(BM_Strtran)->Arg(16)->Arg(LONG_TEXT);
BENCHMARK(BM_Replicate_16MiB);
BENCHMARK_CAPTURE(BM_Rat_InRunOfA, ab, std::string("ab"))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Rat_InRunOfA, a1021aba, LONG_PERIODIC_PATTERN)->Unit(benchmark::kMillisecond);

const bool PYTHON_REFERENCES = [] {
  registerPythonReference("BM_Python_BytesUpper/1048576", sample(LONG_TEXT), "", "data.upper()",
                          LONG_TEXT);
  registerPythonReference("BM_Python_BytesReplace/1048576", sample(LONG_TEXT), "",
                          "data.replace(b'ab', b'XYZ')", LONG_TEXT);
  registerPythonReference("BM_Python_BytesRfind_InRunOfA/ab", std::string(RUN_OF_A, 'a'), "",
                          "data.rfind(b'ab')", RUN_OF_A);
  registerPythonReference("BM_Python_BytesRfind_InRunOfA/a1021aba", std::string(RUN_OF_A, 'a'),
                          "pattern = b'a' * 1021 + b'aba'", "data.rfind(pattern)", RUN_OF_A);
  return true;
}();

}  // namespace
