// Value serialization, checksums and compression, side by side with Debian's
// Python: marshal (garbage collector off) and zlib on the same work.
#include <benchmark/benchmark.h>

#include <string>

#include "frame/frame.h"
#include "reference.h"

KOVO_FUNC(VAR2BIN);
KOVO_FUNC(BIN2VAR);
KOVO_FUNC(HB_CRC32);
KOVO_FUNC(HB_CHECKSUM);
KOVO_FUNC(HB_COMPRESS);

namespace {

constexpr int MIXED_ITEMS = 1000000;
constexpr size_t CHECKED_BYTES = size_t{16} << 20;
constexpr size_t COMPRESSED_BYTES = size_t{1} << 20;

// A million items, a fifth each of integers, doubles, seven-byte strings,
// logicals and three-element arrays; the Python list below is the same.
void putMixedItems(VMEngine* vm, Item* dst) {
  arrayNew(vm, dst, MIXED_ITEMS);
  char text[16];
  for (int i = 0; i < MIXED_ITEMS; i++) {
    Item* element = arrayGetItemPtr(dst, static_cast<uint32_t>(i) + 1);
    switch (i % 5) {
      case 0:
        itemPutNI(vm, element, i);
        break;
      case 1:
        itemPutND(vm, element, i + 0.5);
        break;
      case 2:
        std::snprintf(text, sizeof text, "s%06d", i);
        itemPutC(vm, element, text);
        break;
      case 3:
        itemPutL(vm, element, i % 2 == 0);
        break;
      default:
        arrayNew(vm, element, 3);
        itemPutNI(vm, arrayGetItemPtr(element, 1), i);
        itemPutND(vm, arrayGetItemPtr(element, 2), i * 0.25);
        itemPutC(vm, arrayGetItemPtr(element, 3), "x");
        break;
    }
  }
}

const char PYTHON_MIXED_ITEMS[] =
    "import marshal\n"
    "gc.disable()\n"
    "items = []\n"
    "for i in range(1000000):\n"
    "    k = i % 5\n"
    "    items.append(i if k == 0 else i + 0.5 if k == 1 else b's%06d' % i if k == 2 else\n"
    "                 i % 2 == 0 if k == 3 else [i, i * 0.25, b'x'])\n"
    "blob = marshal.dumps(items)\n";

// Calls the function on the argument once per iteration.
void callRepeatedly(benchmark::State& state, VMFunction function, VMEngine* vm, Item* arg,
                    int64_t bytes) {
  DynSymbol* symbol = xdynsymGet(vm, "BENCH");
  symbol->function = function;
  for (auto _ : state)
    benchmark::DoNotOptimize(benchCall(vm, symbol, {arg})->type);
  if (bytes > 0) state.SetBytesProcessed(bytes * state.iterations());
}

void BM_Var2Bin_MixedMillion(benchmark::State& state) {
  VMEngine* vm = benchContext();
  Item* items = itemNew(vm, nullptr);
  putMixedItems(vm, items);
  callRepeatedly(state, VAR2BIN, vm, items, 0);
  xItemRelease(vm, items);
  vmDestroy(vm);
}

void BM_Bin2Var_MixedMillion(benchmark::State& state) {
  VMEngine* vm = benchContext();
  Item* items = itemNew(vm, nullptr);
  putMixedItems(vm, items);
  DynSymbol* encoder = xdynsymGet(vm, "VAR2BIN");
  encoder->function = VAR2BIN;
  Item* stream = itemNew(vm, benchCall(vm, encoder, {items}));
  callRepeatedly(state, BIN2VAR, vm, stream, 0);
  xItemRelease(vm, stream);
  xItemRelease(vm, items);
  vmDestroy(vm);
}

void checkText(benchmark::State& state, VMFunction function, size_t length) {
  VMEngine* vm = benchContext();
  std::string bytes = randomLowercase(length, 7);
  Item* text = itemPutCL(vm, itemNew(vm, nullptr), bytes.data(), static_cast<uint32_t>(length));
  callRepeatedly(state, function, vm, text, static_cast<int64_t>(length));
  xItemRelease(vm, text);
  vmDestroy(vm);
}

void BM_Crc32_16MiB(benchmark::State& state) {
  checkText(state, HB_CRC32, CHECKED_BYTES);
}
void BM_Checksum_16MiB(benchmark::State& state) {
  checkText(state, HB_CHECKSUM, CHECKED_BYTES);
}
void BM_Compress_1MiB(benchmark::State& state) {
  checkText(state, HB_COMPRESS, COMPRESSED_BYTES);
}

BENCHMARK(BM_Var2Bin_MixedMillion)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Bin2Var_MixedMillion)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Crc32_16MiB)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Checksum_16MiB)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Compress_1MiB)->Unit(benchmark::kMillisecond);

const bool pythonReferences = [] {
  registerPythonReference("Python_marshal_dumps_MixedMillion", "", PYTHON_MIXED_ITEMS,
                          "marshal.dumps(items)", 0);
  registerPythonReference("Python_marshal_loads_MixedMillion", "", PYTHON_MIXED_ITEMS,
                          "marshal.loads(blob)", 0);
  registerPythonReference("Python_zlib_crc32_16MiB", randomLowercase(CHECKED_BYTES, 7),
                          "import zlib", "zlib.crc32(data)", CHECKED_BYTES);
  registerPythonReference("Python_zlib_adler32_16MiB", randomLowercase(CHECKED_BYTES, 7),
                          "import zlib", "zlib.adler32(data)", CHECKED_BYTES);
  registerPythonReference("Python_zlib_compress_1MiB", randomLowercase(COMPRESSED_BYTES, 7),
                          "import zlib", "zlib.compress(data)", COMPRESSED_BYTES);
  return true;
}();

}  // namespace
