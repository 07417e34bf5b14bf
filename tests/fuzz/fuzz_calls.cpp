// Every exported function under random calls: the input is decoded into a
// sequence of calls of functions that the library exports (found by name in
// the loaded library, as the shell finds them, so new families join without
// an edit here), each with 0 to 10 arguments of every item type the host has,
// passed by value or by reference, in the ordinary or the extended frame,
// between changes of the settings that steer the text tools. After each call
// the host's invariants are checked; at the end of the input the context must
// hold no heap block.
//
// The run works in a temporary directory of its own (the current directory,
// TEMP and the registry store), and the process may write nowhere else and
// open no network connection, whatever the input says.
#include <fuzzer/FuzzedDataProvider.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "call_checks.h"
#include "kovo/host_embed.h"
#include "sandbox.h"
#include "shell/library.h"
#include "shell/literal.h"

namespace {

// Left out, each for its reason.
const char* const EXCLUDED[] = {
    "SETNEWDATE",         // sets the system clock
    "SETNEWTIME",         // sets the system clock
    "HB_POINTER2STRING",  // reads whatever address the program hands it, by design
};

// Called before a call, now and then, to vary what steers the functions: the
// text-tools argument-error mode, the AT-like, multi-pass and reference
// modes, and the SET table. Absent ones are skipped.
const char* const SETTINGS[] = {"CSETARGERR", "CSETATMUPA", "SETATLIKE", "CSETREF", "SET"};

constexpr size_t MAX_CALLS = 48;
constexpr uint32_t MAX_ARGS = 10;
constexpr int MAX_DEPTH = 3;

struct Export {
  std::string name;
  VMFunction function;
  bool reached;
};

struct Run {
  std::unique_ptr<Library> library;
  std::vector<Export> functions;
  std::vector<Export> settings;
  std::string bigText;  // every byte value, repeated
  uint64_t calls;
};

Run* run = nullptr;
// FUZZ_CALLS_TRACE=1 prints every call as the shell would spell it, to turn
// a finding into a case.
bool tracing = false;

// An unrecoverable internal error (memory low, __ERRINHANDLER) must not
// return: it ends the input as it would end the program.
struct InternalErrorStop {};

[[noreturn]] void stopOnInternalError(VMEngine*, void*, int32_t, const char*, const char*) {
  throw InternalErrorStop{};
}

const HostEvents EVENTS{nullptr, nullptr, nullptr, nullptr, stopOnInternalError,
                        nullptr, nullptr, nullptr};

void blockReturnsFirstArgument(VMEngine* vm, Block*, uint32_t argc, Item** argv, Item* result) {
  if (argc == 0) {
    itemClear(vm, result);
  } else {
    itemCopy(vm, result, itemUnRef(vm, argv[0]));
  }
}

bool excluded(const std::string& name) {
  for (const char* entry : EXCLUDED) {
    if (name == entry) return true;
  }
  return false;
}

// Makes the items of the calls out of the input.
class ItemMaker {
 public:
  ItemMaker(VMEngine* vm, FuzzedDataProvider& input, const Item* lastResult)
      : vm_(vm), input_(input), lastResult_(lastResult) {}

  void make(Item* dst, int depth) {
    switch (input_.ConsumeIntegralInRange<int>(0, 18)) {
      case 0:
        itemClear(vm_, dst);
        break;
      case 1:
        itemPutNI(vm_, dst, someInteger());
        break;
      case 2:
        itemPutNL(vm_, dst, someInteger());
        break;
      case 3:
        itemPutNDLen(vm_, dst, someDouble(), input_.ConsumeIntegralInRange<int>(-1, 30),
                     input_.ConsumeIntegralInRange<int>(-1, 12));
        break;
      case 4: {
        static const int32_t DAYS[] = {0, 1, 2415019, 2451545, 2460341, 5373484, -1, INT32_MAX};
        itemPutDL(vm_, dst, input_.PickValueInArray(DAYS));
        break;
      }
      case 5:
        itemPutL(vm_, dst, input_.ConsumeBool());
        break;
      case 6:
        shortText(dst, input_.ConsumeIntegralInRange<size_t>(0, 2), false);
        break;
      case 7:
        shortText(dst, input_.ConsumeIntegralInRange<size_t>(0, 64), false);
        break;
      case 8:
        shortText(dst, input_.ConsumeIntegralInRange<size_t>(0, 64), true);
        break;
      case 9: {
        static const uint32_t LENGTHS[] = {255, 256, 4096, 65535, 65536, 65537};
        uint32_t length = input_.PickValueInArray(LENGTHS);
        itemPutCLM(vm_, dst, run->bigText.data() + input_.ConsumeIntegral<uint8_t>(), length,
                   input_.ConsumeBool());
        break;
      }
      case 10: {
        // Words the functions look for, and the heads of the stored forms
        // that the readers recognise, followed by bytes of the input.
        static const std::string WORDS[] = {"abc",
                                            " a b,c ",
                                            "12.5",
                                            "-3",
                                            "20240131",
                                            "C:\\TEMP\\",
                                            "*.*",
                                            "a?c",
                                            "#54A",
                                            "#52A",
                                            std::string("XHBIN\0", 6),
                                            "{1,2}"};
        std::string text = input_.PickValueInArray(WORDS) +
                           input_.ConsumeBytesAsString(input_.ConsumeIntegralInRange(0, 64));
        itemPutCL(vm_, dst, text.data(), static_cast<uint32_t>(text.size()));
        break;
      }
      case 11:
        arrayNew(vm_, dst, 0);
        break;
      case 12:
      case 13:
        array(dst, depth);
        break;
      case 14:
        hash(dst, depth);
        break;
      case 15:
        itemPutBlock(vm_, dst, blockNew(vm_, blockReturnsFirstArgument, nullptr, nullptr));
        break;
      case 16: {
        static char target[64];
        itemPutPtr(vm_, dst, input_.ConsumeBool() ? target : nullptr);
        break;
      }
      case 17:
        itemPutCounter(vm_, dst, input_.ConsumeIntegral<uint32_t>());
        break;
      default:
        // What the previous call returned: the pointer, token environment
        // or serialized stream that the next function is made for.
        itemCopy(vm_, dst, lastResult_);
        break;
    }
  }

 private:
  int32_t someInteger() {
    static const int32_t LIMITS[] = {
        0,   1,   -1,    2,     7,         10,        31,         32,        63,        64,
        255, 256, 65535, 65536, INT32_MAX, INT32_MIN, -INT32_MAX, INT16_MAX, INT16_MIN, 1000000000};
    return input_.ConsumeBool() ? input_.PickValueInArray(LIMITS)
                                : input_.ConsumeIntegral<int8_t>();
  }

  double someDouble() {
    static const double VALUES[] = {0.0,
                                    -0.0,
                                    std::numeric_limits<double>::quiet_NaN(),
                                    std::numeric_limits<double>::infinity(),
                                    -std::numeric_limits<double>::infinity(),
                                    0.5,
                                    -1.5,
                                    2.999999,
                                    1e300,
                                    -1e300,
                                    std::numeric_limits<double>::denorm_min(),
                                    2147483648.0,
                                    -2147483649.0,
                                    4294967296.0,
                                    9007199254740993.0};
    if (input_.ConsumeBool()) return input_.PickValueInArray(VALUES);
    return input_.ConsumeFloatingPoint<double>();
  }

  void shortText(Item* dst, size_t length, bool memo) {
    std::string bytes = input_.ConsumeBytesAsString(length);
    itemPutCLM(vm_, dst, bytes.data(), static_cast<uint32_t>(bytes.size()), memo);
  }

  void array(Item* dst, int depth) {
    uint32_t length = depth < MAX_DEPTH ? input_.ConsumeIntegralInRange<uint32_t>(1, 4) : 0;
    arrayNew(vm_, dst, length);
    for (uint32_t i = 1; i <= length; i++)
      make(arrayGetItemPtr(dst, i), depth + 1);
  }

  void hash(Item* dst, int depth) {
    hashNew(vm_, dst);
    int pairs = depth < MAX_DEPTH ? input_.ConsumeIntegralInRange<int>(0, 3) : 0;
    for (int i = 0; i < pairs; i++) {
      Item key{};
      Item value{};
      if (input_.ConsumeBool()) {
        itemPutNI(vm_, &key, input_.ConsumeIntegral<int8_t>());
      } else {
        shortText(&key, input_.ConsumeIntegralInRange<size_t>(0, 4), false);
      }
      make(&value, depth + 1);
      hashAddForward(vm_, dst, UINT32_MAX, &key, &value);
      itemClear(vm_, &key);
      itemClear(vm_, &value);
    }
  }

  VMEngine* vm_;
  FuzzedDataProvider& input_;
  const Item* lastResult_;
};

// The arguments of one call: items the call copies, and for each one passed
// by reference the variable it refers to.
class Arguments {
 public:
  explicit Arguments(VMEngine* vm) : vm_(vm) {}
  ~Arguments() {
    for (Item& item : items_)
      itemClear(vm_, &item);
    for (ValueCell* cell : cells_)
      cellRelease(cell);
  }

  void add(ItemMaker& maker, bool byReference) {
    Item& slot = items_[count_++];
    if (!byReference) {
      maker.make(&slot, 0);
      return;
    }
    Item value{};
    maker.make(&value, 0);
    ValueCell* cell = cellNew(vm_, &value);  // held by the list below
    itemClear(vm_, &value);
    cells_.push_back(cell);
    itemPutRef(vm_, &slot, cell);
  }

  uint32_t count() const { return count_; }
  Item** pointers() {
    for (uint32_t i = 0; i < count_; i++)
      pointers_[i] = &items_[i];
    return pointers_;
  }
  const std::vector<ValueCell*>& cells() const { return cells_; }
  const Item* items() const { return items_; }

 private:
  VMEngine* vm_;
  Item items_[MAX_ARGS] = {};
  Item* pointers_[MAX_ARGS] = {};
  uint32_t count_ = 0;
  std::vector<ValueCell*> cells_;
};

void printFigures() {
  size_t reached = 0;
  for (const Export& function : run->functions)
    reached += function.reached ? 1 : 0;
  std::fprintf(stderr, "fuzz_calls: %llu calls, %zu of %zu functions reached\n",
               static_cast<unsigned long long>(run->calls), reached, run->functions.size());
}

void trace(const Export& target, Arguments& args, bool extended) {
  std::string line = target.name + "(";
  for (uint32_t i = 0; i < args.count(); i++) {
    const Item* item = &args.items()[i];
    if (i > 0) line += ", ";
    if (item->type & HB_IT_BYREF) {
      line += "@";
      item = &item->item.asRefer.value->value;
    }
    if ((item->type & HB_IT_STRING) && itemStrLen(item) > 64) {
      // Long texts are shown by their head and length.
      line += formatString(itemStrPtr(item), 64) + "...(" + std::to_string(itemStrLen(item)) +
              " bytes)";
    } else {
      line += formatLiteral(item).substr(0, 300);
    }
  }
  std::fprintf(stderr, "%s%s)\n", extended ? "[extended] " : "", line.c_str());
}

void call(VMEngine* vm, Export& target, Arguments& args) {
  // The figures go out every million calls as well: an interrupted run
  // leaves no exit handler to print them.
  if (++run->calls % 1000000 == 0) printFigures();
  target.reached = true;
  DynSymbol* symbol = xdynsymGet(vm, target.name.c_str());
  symbol->function = target.function;
  if (tracing) trace(target, args, vm->extendedFrames);
  auto start = std::chrono::steady_clock::now();
  StackMark mark = markStack(vm);
  vmCallFunction(vm, symbol, args.count(), args.pointers());
  if (tracing) {
    std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    std::fprintf(stderr, "  took %.3f s\n", took.count());
  }
  checkStack(vm, mark, target.name.c_str());
  checkItem(&vm->stack.Return, target.name.c_str());
  for (uint32_t i = 0; i < args.count(); i++)
    checkItem(&args.items()[i], target.name.c_str());
  for (ValueCell* cell : args.cells())
    checkCell(cell, target.name.c_str());
}

void oneCall(VMEngine* vm, FuzzedDataProvider& input, Item* lastResult) {
  if (!run->settings.empty() && input.ConsumeIntegralInRange<int>(0, 7) == 0) {
    Export& setting =
        run->settings[input.ConsumeIntegralInRange<size_t>(0, run->settings.size() - 1)];
    Arguments args(vm);
    ItemMaker maker(vm, input, lastResult);
    uint32_t count = input.ConsumeIntegralInRange<uint32_t>(0, 3);
    for (uint32_t i = 0; i < count; i++)
      args.add(maker, false);
    call(vm, setting, args);
  }
  Export& target =
      run->functions[input.ConsumeIntegralInRange<size_t>(0, run->functions.size() - 1)];
  vm->extendedFrames = input.ConsumeBool();
  Arguments args(vm);
  ItemMaker maker(vm, input, lastResult);
  uint32_t count = input.ConsumeIntegralInRange<uint32_t>(0, MAX_ARGS);
  for (uint32_t i = 0; i < count; i++)
    args.add(maker, input.ConsumeIntegralInRange<int>(0, 3) == 0);
  call(vm, target, args);
  itemCopy(vm, lastResult, &vm->stack.Return);
  itemClear(vm, &vm->stack.Return);
}

}  // namespace

// A call that asks for more than the run can give (SPACE(2147483647)) fails
// its allocation, and the host reports memory low as the program's end.
extern "C" const char* __asan_default_options() {
  return "allocator_may_return_null=1:max_allocation_size_mb=256";
}

// The blocks of a context's heap are counted by the run itself, input by
// input, to the last one; LeakSanitizer watches everything else. When an
// internal error ends the program, the blocks of the functions it left are
// not freed, and need not be.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:/host/heap.cpp\n";
}

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  enterSandbox(*argc, *argv);  // before libFuzzer reads the paths among them
  run = new Run{};
  tracing = std::getenv("FUZZ_CALLS_TRACE") != nullptr;
  run->library = std::make_unique<Library>(KOVO_FUZZ_LIBRARY);
  if (!run->library->loaded()) {
    std::fprintf(stderr, "cannot load %s: %s\n", KOVO_FUZZ_LIBRARY, run->library->error().c_str());
    std::exit(2);
  }
  for (const std::string& name : run->library->functionNames()) {
    if (excluded(name)) continue;
    run->functions.push_back({name, run->library->find(name), false});
  }
  for (const char* name : SETTINGS) {
    if (VMFunction function = run->library->find(name)) {
      run->settings.push_back({name, function, false});
    }
  }
  run->bigText.resize(65537 + 256);
  for (size_t i = 0; i < run->bigText.size(); i++)
    run->bigText[i] = static_cast<char>(i * 7);
  std::atexit(printFigures);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  startInput();
  FuzzedDataProvider input(data, size);
  VMConfig config{&EVENTS, nullptr, false};
  VMEngine* vm = vmCreate(&config);
  StackMark bottom = markStack(vm);
  Item lastResult{};
  bool ended = false;
  try {
    for (size_t calls = 0; calls < MAX_CALLS && input.remaining_bytes() > 0; calls++) {
      oneCall(vm, input, &lastResult);
    }
  } catch (const InternalErrorStop&) {
    // The program would end here: the frames the error left are dropped.
    unwindStack(vm, bottom);
    ended = true;
  }
  itemClear(vm, &lastResult);
  for (int fd : filesLeftOpen())
    fsClose(vm, fd);
  size_t left = vmDestroy(vm);
  clearRunDirectory();
  if (left != 0 && !ended) {
    std::fprintf(stderr, "heap blocks left in the context: %zu\n", left);
    std::abort();
  }
  return 0;
}
