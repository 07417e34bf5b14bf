// HB_DESERIALIZESIMPLE on any bytes, with and without a length limit: the
// first byte chooses the limit, the rest is the text.
#include "frame/frame.h"
#include "fuzz_vm.h"

KOVO_FUNC(HB_DESERIALIZESIMPLE);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  VMEngine* vm = fuzzContext();
  Item text{};
  putExactString(&text, data + 1, size - 1);
  Item limit{};
  itemPutNI(vm, &limit, static_cast<int8_t>(data[0]));
  Item* args[] = {&text, &limit};
  fuzzCall(HB_DESERIALIZESIMPLE, args, 1);
  fuzzCall(HB_DESERIALIZESIMPLE, args, 2);
  checkNoLeak();
  return 0;
}
