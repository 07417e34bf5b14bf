// Restoring memory variables from any bytes, as a ".mem" file would hold them.
// Each input gets a context of its own, since the names it holds become
// symbols that would otherwise pile up over the run.
#include <cstdlib>
#include <cstring>

#include "kovo/host_embed.h"
#include "rtl/memvar_file.h"

namespace {

struct Input {
  const uint8_t* data;
  size_t size;
  size_t pos;
};

// Hands out the input's bytes themselves, so that a read past them is caught.
uint32_t readInput(void* cargo, void* buffer, uint32_t count) {
  auto* input = static_cast<Input*>(cargo);
  size_t n = count < input->size - input->pos ? count : input->size - input->pos;
  if (n) std::memcpy(buffer, input->data + input->pos, n);
  input->pos += n;
  return static_cast<uint32_t>(n);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const HostEvents quiet{};
  VMConfig config{&quiet, nullptr, false};
  // The filters are compiled once, in a context that lives for the run.
  static VMEngine* maskContext = vmCreate(&config);
  static const MemvarMask masks[] = {
      {maskContext, "*"}, {maskContext, "A*"}, {maskContext, "?B*"}, {maskContext, "*C"}};
  VMEngine* vm = vmCreate(&config);
  // The input's length picks the filter, so that every byte stays file.
  Input input{data, size, 0};
  memvarRestoreRecords(vm, {readInput, &input}, masks[size % 4], (size / 4) % 2 == 0);
  itemClear(vm, &vm->stack.Return);
  memvarClearAll(vm);
  if (vmDestroy(vm) != 0) std::abort();
  return 0;
}
