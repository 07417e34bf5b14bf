// bin2item has no length: its caller vouches for a whole stream. Wherever
// BIN2VAR's bounded reading finds a whole stream inside the bytes, bin2item
// must read exactly that stream, no byte further, and make the same value;
// anything without the signature it must leave at the first byte that differs.
#include <cstdlib>
#include <cstring>

#include "fuzz_vm.h"
#include "rtl/xhbin.h"

namespace {

bool sameValue(VMEngine* vm, const Item* a, const Item* b) {
  uint32_t lengthA = 0;
  uint32_t lengthB = 0;
  char* streamA = var2bin(vm, a, &lengthA);
  char* streamB = var2bin(vm, b, &lengthB);
  bool same = lengthA == lengthB && std::memcmp(streamA, streamB, lengthA) == 0;
  vmFree(vm, streamA);
  vmFree(vm, streamB);
  return same;
}

// A heap copy of exactly `size` bytes, and `terminator` more zero bytes.
char* exactCopy(const uint8_t* data, size_t size, size_t terminator) {
  auto* copy = static_cast<char*>(std::calloc(size + terminator, 1));
  if (size) std::memcpy(copy, data, size);
  return copy;
}

// Text without the signature, terminated as a C string: bin2item must give
// nil without reading past the terminator.
void checkRefused(VMEngine* vm, const uint8_t* data, size_t size) {
  char* text = exactCopy(data, size, 1);
  if (std::strncmp(text, XHBIN_SIGNATURE, XHBIN_SIGNATURE_LENGTH) != 0) {
    Item* item = bin2item(vm, text);
    if (item->type != HB_IT_NIL) std::abort();
    xItemRelease(vm, item);
  }
  std::free(text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  VMEngine* vm = fuzzContext();
  if (size < XHBIN_SIGNATURE_LENGTH || std::memcmp(data, XHBIN_SIGNATURE, XHBIN_SIGNATURE_LENGTH)) {
    checkRefused(vm, data, size);
    checkNoLeak();
    return 0;
  }
  Item bounded{};
  XhbinDecoded decoded = xhbinDecode(vm, data, size, &bounded);
  if (decoded.ok && decoded.end <= size) {
    char* stream = exactCopy(data, decoded.end, 0);
    Item* item = bin2item(vm, stream);
    if (!sameValue(vm, &bounded, item)) std::abort();
    xItemRelease(vm, item);
    std::free(stream);
  }
  itemClear(vm, &bounded);
  checkNoLeak();
  return 0;
}
