#include "reference.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

constexpr const char* PYTHON = "/usr/bin/python3";

// Seconds per run of the statement: the best of five repeats.
double measurePython(const std::string& data, const std::string& setup,
                     const std::string& statement) {
  char path[] = "/tmp/kovo-bench-XXXXXX";
  int fd = mkstemp(path);
  if (fd < 0) return 0;
  close(fd);
  std::ofstream(path, std::ios::binary)
      .write(data.data(), static_cast<std::streamsize>(data.size()));
  std::string script =
      "import gc, timeit\n"
      "data = open('" +
      std::string(path) + "', 'rb').read()\n" + setup + "\n" + "stmt = " + "'''" + statement +
      "'''\n"
      "n = 1\n"
      "while timeit.timeit(stmt, globals=globals(), number=n) < 0.2: n *= 2\n"
      "print(min(timeit.repeat(stmt, globals=globals(), number=n, repeat=5)) / n)\n";
  char scriptPath[] = "/tmp/kovo-bench-py-XXXXXX";
  int scriptFd = mkstemp(scriptPath);
  if (scriptFd < 0) return 0;
  close(scriptFd);
  std::ofstream(scriptPath) << script;
  std::string command = std::string(PYTHON) + " " + scriptPath;
  double seconds = 0;
  if (FILE* pipe = popen(command.c_str(), "r")) {
    if (std::fscanf(pipe, "%lf", &seconds) != 1) seconds = 0;
    pclose(pipe);
  }
  std::remove(path);
  std::remove(scriptPath);
  return seconds;
}

}  // namespace

void registerPythonReference(const std::string& name, const std::string& data,
                             const std::string& setup, const std::string& statement,
                             int64_t bytes) {
  benchmark::RegisterBenchmark(name.c_str(),
                               [=](benchmark::State& state) {
                                 double seconds = measurePython(data, setup, statement);
                                 if (seconds <= 0) {
                                   state.SkipWithError("python3 could not be run");
                                   return;
                                 }
                                 for (auto _ : state)
                                   state.SetIterationTime(seconds);
                                 if (bytes > 0) state.SetBytesProcessed(bytes * state.iterations());
                               })
      ->UseManualTime()
      ->Iterations(1);
}

VMEngine* benchContext() {
  static const HostEvents quiet{};
  VMConfig config{&quiet, nullptr, false};
  return vmCreate(&config);
}

Item* benchCall(VMEngine* vm, DynSymbol* symbol, std::initializer_list<Item*> args) {
  vmPushSymbol(vm, symbol);
  vmPushNil(vm);
  for (Item* arg : args)
    itemCopy(vm, vmPush(vm), arg);
  xvmDo(vm, static_cast<uint16_t>(args.size()));
  return &vm->stack.Return;
}

std::string randomLowercase(size_t length, uint32_t seed) {
  std::string text(length, 'a');
  uint32_t state = seed;
  for (char& c : text) {
    state = state * 1664525u + 1013904223u;
    c = static_cast<char>('a' + (state >> 24) % 26);
  }
  return text;
}
