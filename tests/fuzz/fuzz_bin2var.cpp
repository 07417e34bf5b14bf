// BIN2VAR on any bytes.
#include "frame/frame.h"
#include "fuzz_vm.h"

KOVO_FUNC(BIN2VAR);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return fuzzStringReader(BIN2VAR, data, size);
}
