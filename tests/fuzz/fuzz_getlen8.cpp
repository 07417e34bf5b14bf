// HB_GETLEN8 on any bytes.
#include "frame/frame.h"
#include "fuzz_vm.h"

KOVO_FUNC(HB_GETLEN8);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return fuzzStringReader(HB_GETLEN8, data, size);
}
