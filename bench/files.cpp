// Whole-file reads and writes and the line reader over files in a temporary
// directory, beside cat, cp and Python's line iteration on the same files.
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "reference.h"

extern "C" {
void MEMOREAD(VMEngine*);
void MEMOWRIT(VMEngine*);
void HB_FREADLINE(VMEngine*);
}

namespace {

constexpr int64_t MEMO_SIZE = 64 << 20;
constexpr int64_t LINE_FILE_SIZE = 100000000;
constexpr size_t LINE_LENGTH = 80;

// The benchmark files, made once and removed when the program ends.
class BenchFiles {
 public:
  BenchFiles() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kovo-bench-XXXXXX").string();
    directory_ = mkdtemp(pattern.data());
    std::string memo = randomLowercase(static_cast<size_t>(MEMO_SIZE), 5);
    std::ofstream(memoPath(), std::ios::binary).write(memo.data(), MEMO_SIZE);
    std::string line(LINE_LENGTH - 2, 'x');
    line += "\r\n";
    std::ofstream lines(linesPath(), std::ios::binary);
    for (int64_t written = 0; written < LINE_FILE_SIZE; written += LINE_LENGTH)
      lines.write(line.data(), LINE_LENGTH);
  }
  ~BenchFiles() {
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
  }
  std::string memoPath() const { return (directory_ / "memo.txt").string(); }
  std::string copyPath() const { return (directory_ / "copy.txt").string(); }
  std::string linesPath() const { return (directory_ / "lines.txt").string(); }

 private:
  std::filesystem::path directory_;
};

const BenchFiles& files() {
  static BenchFiles instance;
  return instance;
}

// A context whose symbol calls `function`.
struct Caller {
  explicit Caller(VMFunction function) : vm(benchContext()), symbol(xdynsymGet(vm, "BENCH")) {
    symbol->function = function;
  }
  ~Caller() { vmDestroy(vm); }
  Item* text(const std::string& bytes) {
    return itemPutCL(vm, itemNew(vm, nullptr), bytes.data(), static_cast<uint32_t>(bytes.size()));
  }
  VMEngine* vm;
  DynSymbol* symbol;
};

// The machine is shared: like Python's reference (the best of five), each
// figure is also given as the best of five repetitions.
double fastest(const std::vector<double>& runs) {
  return *std::min_element(runs.begin(), runs.end());
}

void bestOfFive(benchmark::internal::Benchmark* bench) {
  bench->Unit(benchmark::kMillisecond)->Repetitions(5)->ComputeStatistics("min", fastest);
}

double childSeconds() {
  struct rusage usage;
  getrusage(RUSAGE_CHILDREN, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// Wall time of a shell command, as a manual-time benchmark; the command's own
// processor time (the shell's included) as the counter "child_cpu_ms".
void shellCommand(benchmark::State& state, const std::string& command) {
  double cpuBefore = childSeconds();
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    if (std::system(command.c_str()) != 0) state.SkipWithError("the command failed");
    std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    state.SetIterationTime(took.count());
  }
  state.counters["child_cpu_ms"] = benchmark::Counter((childSeconds() - cpuBefore) * 1000 /
                                                      static_cast<double>(state.iterations()));
  state.SetBytesProcessed(state.iterations() * MEMO_SIZE);
}

void BM_MEMOREAD_64MiB(benchmark::State& state) {
  Caller caller(MEMOREAD);
  Item* name = caller.text(files().memoPath());
  for (auto _ : state) {
    Item* result = benchCall(caller.vm, caller.symbol, {name});
    if (itemStrLen(result) != MEMO_SIZE) state.SkipWithError("short read");
    itemClear(caller.vm, result);
  }
  state.SetBytesProcessed(state.iterations() * MEMO_SIZE);
  xItemRelease(caller.vm, name);
}
BENCHMARK(BM_MEMOREAD_64MiB)->UseRealTime()->Apply(bestOfFive);

// The first read of a context, which has no freed large block to reuse: the
// system maps and zeroes the string's memory.
void BM_MEMOREAD_64MiB_FirstOfContext(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    {
      Caller caller(MEMOREAD);
      Item* name = caller.text(files().memoPath());
      state.ResumeTiming();
      Item* result = benchCall(caller.vm, caller.symbol, {name});
      if (itemStrLen(result) != MEMO_SIZE) state.SkipWithError("short read");
      itemClear(caller.vm, result);
      state.PauseTiming();
      xItemRelease(caller.vm, name);
    }
    state.ResumeTiming();
  }
  state.SetBytesProcessed(state.iterations() * MEMO_SIZE);
}
BENCHMARK(BM_MEMOREAD_64MiB_FirstOfContext)->UseRealTime()->Apply(bestOfFive);

void BM_cat_64MiB(benchmark::State& state) {
  shellCommand(state, "cat " + files().memoPath() + " > /dev/null");
}
BENCHMARK(BM_cat_64MiB)->UseManualTime()->Apply(bestOfFive);

void BM_MEMOWRIT_64MiB(benchmark::State& state) {
  Caller caller(MEMOWRIT);
  Item* name = caller.text(files().copyPath());
  std::ifstream in(files().memoPath(), std::ios::binary);
  std::string memo((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  Item* text = caller.text(memo);
  for (auto _ : state)
    benchmark::DoNotOptimize(benchCall(caller.vm, caller.symbol, {name, text}));
  state.SetBytesProcessed(state.iterations() * MEMO_SIZE);
  xItemRelease(caller.vm, name);
  xItemRelease(caller.vm, text);
}
BENCHMARK(BM_MEMOWRIT_64MiB)->UseRealTime()->Apply(bestOfFive);

void BM_cp_64MiB(benchmark::State& state) {
  shellCommand(state, "cp " + files().memoPath() + " " + files().copyPath());
}
BENCHMARK(BM_cp_64MiB)->UseManualTime()->Apply(bestOfFive);

// Every line of the 100 MB file, as a program's loop reads them.
void BM_HB_FREADLINE_100MB(benchmark::State& state) {
  Caller caller(HB_FREADLINE);
  Item* line = itemPutRef(caller.vm, itemNew(caller.vm, nullptr), cellNew(caller.vm, nullptr));
  Item* handle = itemNew(caller.vm, nullptr);
  int64_t lines = 0;
  for (auto _ : state) {
    FHANDLE h = fsOpen(caller.vm, files().linesPath().c_str(), FO_READ | FO_DENYNONE);
    itemPutNL(caller.vm, handle, h);
    while (itemGetNI(benchCall(caller.vm, caller.symbol, {handle, line})) == 0)
      lines++;
    fsClose(caller.vm, h);
  }
  if (lines != state.iterations() * (LINE_FILE_SIZE / static_cast<int64_t>(LINE_LENGTH)))
    state.SkipWithError("wrong line count");
  state.SetBytesProcessed(state.iterations() * LINE_FILE_SIZE);
  xItemRelease(caller.vm, line);
  xItemRelease(caller.vm, handle);
}
BENCHMARK(BM_HB_FREADLINE_100MB)->UseRealTime()->Apply(bestOfFive);

[[maybe_unused]] const bool PYTHON_LINES = [] {
  registerPythonReference("BM_python_for_line_in_file_100MB", "",
                          "f = '" + files().linesPath() + "'", "for line in open(f, 'rb'): pass",
                          LINE_FILE_SIZE);
  return true;
}();

}  // namespace
