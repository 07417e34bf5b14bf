// KOVO5_STR_TO_ARRAY on any bytes.
#include "frame/frame.h"
#include "fuzz_vm.h"

KOVO_FUNC(KOVO5_STR_TO_ARRAY);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return fuzzStringReader(KOVO5_STR_TO_ARRAY, data, size);
}
