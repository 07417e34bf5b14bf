// zlib compression of strings: HB_COMPRESS, HB_UNCOMPRESS, the worst-case
// buffer size and the last result code of the thread.
#include <zlib.h>

#include <algorithm>

#include "frame/frame.h"
#include "frame/state.h"

namespace {

struct CompressState {
  int32_t lastCode;
};

const StateSlot<CompressState> compressSlot;

void keepCode(VMEngine* vm, int code) {
  compressSlot(vm).lastCode = code;
}

// n + 15 per full hundred + 12, and 15 more for a part of a hundred.
uint64_t compressBufferLength(uint32_t n) {
  return uint64_t{n} + uint64_t{n / 100} * 15 + 12 + (n % 100 ? 15 : 0);
}

// The source bytes: the string, or as many of them as a numeric length
// parameter asks for, never more than the string holds.
struct Source {
  const Bytef* data;
  uLong length;
};

Source sourceOf(VMEngine* vm, const Item* text, int lengthParam) {
  uint32_t length = itemStrLen(text);
  if (paramIsNumCompat(vm, lengthParam)) {
    length = std::min(length, static_cast<uint32_t>(paramGetNL(vm, lengthParam)));
  }
  return {reinterpret_cast<const Bytef*>(itemStrPtr(text)), length};
}

// The buffer of a string passed by reference, written in place; its capacity
// is what the caller says, never more than the string holds.
struct Destination {
  Bytef* data;
  uLongf capacity;
};

Destination destinationOf(VMEngine* vm, Item* text, uint32_t capacity) {
  uint32_t length = 0;
  auto* data = reinterpret_cast<Bytef*>(itemGetWriteCL(vm, text, &length));
  return {data, std::min(length, capacity)};
}

// Adopts `buffer` as the result on success; frees it and leaves nil otherwise.
void returnProduced(VMEngine* vm, int code, Bytef* buffer, uLongf produced) {
  keepCode(vm, code);
  if (code != Z_OK) {
    vmFree(vm, buffer);
    return;
  }
  itemPutCPtr(vm, returnItem(vm), reinterpret_cast<char*>(buffer), static_cast<uint32_t>(produced));
}

}  // namespace

// HB_COMPRESS([nLevel], cSource, [nSourceLen], [@cDest, @nDestLen]): a
// numeric first parameter is the level and moves the others one place on.
KOVO_FUNC(HB_COMPRESS) {
  int first = paramIsNumCompat(vm, 1) ? 2 : 1;
  int level = first == 2 ? paramGetNI(vm, 1) : Z_DEFAULT_COMPRESSION;
  const Item* text = paramItem(vm, first, HB_IT_STRING);
  if (!text) return argError(vm, 3012, "HB_COMPRESS", 1);
  Source source = sourceOf(vm, text, first + 1);
  if (paramCount(vm) == first + 3) {
    Item* dest = paramItem(vm, first + 2, HB_IT_BYREF);
    Item* destLength = paramItem(vm, first + 3, HB_IT_BYREF);
    if (!dest || !(dest->type & HB_IT_STRING) || !destLength) {
      return argError(vm, 3012, "HB_COMPRESS", 1);
    }
    Destination out = destinationOf(vm, dest, static_cast<uint32_t>(paramGetNL(vm, first + 3)));
    int code = compress2(out.data, &out.capacity, source.data, source.length, level);
    keepCode(vm, code);
    if (code == Z_OK) hb_stornl(vm, static_cast<int32_t>(out.capacity), first + 3);
    itemPutNI(vm, returnItem(vm), code);
    return;
  }
  uint64_t capacity = compressBufferLength(static_cast<uint32_t>(source.length));
  auto* buffer = static_cast<Bytef*>(vmTryAlloc(vm, capacity + 1));
  if (!buffer) return keepCode(vm, Z_MEM_ERROR);
  uLongf produced = capacity;
  int code = compress2(buffer, &produced, source.data, source.length, level);
  returnProduced(vm, code, buffer, produced);
}

// HB_UNCOMPRESS(nDestLen, cSource, [nSourceLen], [@cDest]).
KOVO_FUNC(HB_UNCOMPRESS) {
  const Item* text = paramItem(vm, 2, HB_IT_STRING);
  if (!paramIsNumCompat(vm, 1) || !text) return argError(vm, 3012, "HB_UNCOMPRESS", 1);
  auto destLength = static_cast<uint32_t>(paramGetNL(vm, 1));
  Source source = sourceOf(vm, text, 3);
  if (paramCount(vm) == 4) {
    Item* dest = paramItem(vm, 4, HB_IT_BYREF);
    if (!dest || !(dest->type & HB_IT_STRING)) return argError(vm, 3012, "HB_UNCOMPRESS", 1);
    Destination out = destinationOf(vm, dest, destLength);
    int code = uncompress(out.data, &out.capacity, source.data, source.length);
    keepCode(vm, code);
    itemPutNI(vm, returnItem(vm), code);
    return;
  }
  auto* buffer = static_cast<Bytef*>(vmTryAlloc(vm, uint64_t{destLength} + 1));
  if (!buffer) return keepCode(vm, Z_MEM_ERROR);
  uLongf produced = destLength;
  int code = uncompress(buffer, &produced, source.data, source.length);
  returnProduced(vm, code, buffer, produced);
}

KOVO_FUNC(HB_COMPRESSERROR) {
  itemPutNI(vm, returnItem(vm), compressSlot(vm).lastCode);
}

// zlib's own texts, for the codes it has them; "" for any other number.
KOVO_FUNC(HB_COMPRESSERRORDESC) {
  int32_t code = paramGetNI(vm, 1);
  bool known = code >= Z_VERSION_ERROR && code <= Z_NEED_DICT;
  itemPutC(vm, returnItem(vm), known ? zError(code) : "");
}

KOVO_FUNC(HB_COMPRESSBUFLEN) {
  auto length = static_cast<uint32_t>(paramGetNL(vm, 1));
  itemPutNL(vm, returnItem(vm), static_cast<int32_t>(compressBufferLength(length)));
}
