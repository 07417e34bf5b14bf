// HB_CRC32 and HB_CHECKSUM: zlib's CRC-32 and Adler-32 of a string.
#include <zlib.h>

#include "frame/frame.h"

namespace {

using CheckFunction = uLong (*)(uLong start, const Bytef* data, uInt length);

// Neither takes the conventional start value of its algorithm: without a
// numeric second parameter both start from 0. The value comes back as a
// double of the 32 bits read as signed, so 0x80000000 and up are negative.
void returnCheckValue(VMEngine* vm, CheckFunction check) {
  const Item* data = paramItem(vm, 1, HB_IT_STRING);
  if (!data) return argError(vm, 3012, "Must be a string", 1);
  uLong start = static_cast<uint32_t>(paramNumberOr(vm, 2, 0));
  auto value = static_cast<uint32_t>(
      check(start, reinterpret_cast<const Bytef*>(itemStrPtr(data)), itemStrLen(data)));
  itemPutND(vm, returnItem(vm), static_cast<int32_t>(value));
}

}  // namespace

KOVO_FUNC(HB_CRC32) {
  returnCheckValue(vm, crc32);
}

KOVO_FUNC(HB_CHECKSUM) {
  returnCheckValue(vm, adler32);
}
