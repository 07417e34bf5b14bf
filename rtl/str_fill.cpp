// Repetition: SPACE, REPLICATE.
#include <cstring>

#include "str_result.h"

namespace {

// Source blocks up to this size stay in the cache while they are copied.
constexpr uint64_t CACHED_SOURCE = 32768;

// Fills `total` bytes with copies of the `length` bytes at the start of the
// buffer: the filled part doubles until it is a cache-sized block, which is
// then copied on. Every copy starts at a multiple of `length`.
void repeatPrefix(char* buffer, uint64_t length, uint64_t total) {
  uint64_t filled = length;
  uint64_t step = length;
  while (filled < total) {
    uint64_t chunk = step < total - filled ? step : total - filled;
    std::memcpy(buffer + filled, buffer, static_cast<size_t>(chunk));
    filled += chunk;
    if (step < CACHED_SOURCE) step = filled;
  }
}

}  // namespace

// No upper limit is imposed on the count.
KOVO_FUNC(SPACE) {
  if (!paramIsNumCompat(vm, 1)) return argError(vm, 1105, "SPACE", 1);
  int32_t count = paramGetNL(vm, 1);
  if (count < 1) return returnEmptyText(vm);
  char* buffer = newText(vm, static_cast<uint32_t>(count));
  std::memset(buffer, ' ', static_cast<size_t>(count));
  returnText(vm, buffer, static_cast<uint32_t>(count));
}

// The size of the result is checked in double precision before anything is
// allocated, so an oversized request costs nothing but its error.
KOVO_FUNC(REPLICATE) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  if (!text || !paramIsNumCompat(vm, 2)) return argError(vm, 1106, "REPLICATE", 2);
  int32_t count = paramGetNL(vm, 2);
  if (count < 1) return returnEmptyText(vm);
  uint32_t length = itemStrLen(text);
  if (textTooLong(static_cast<double>(length) * count)) {
    return stringOverflowError(vm, "REPLICATE", 2);
  }
  uint64_t total = uint64_t{length} * static_cast<uint32_t>(count);
  if (total == 0) return returnEmptyText(vm);
  char* buffer = newText(vm, total);
  if (length == 1) {
    std::memset(buffer, itemStrPtr(text)[0], static_cast<size_t>(total));
  } else {
    std::memcpy(buffer, itemStrPtr(text), length);
    repeatPrefix(buffer, length, total);
  }
  returnText(vm, buffer, static_cast<uint32_t>(total));
}
