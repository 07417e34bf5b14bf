// Low-level file functions over the host's file layer: handles, reading,
// writing, seeking and the layer's error cell.
#include <cmath>
#include <cstdint>
#include <cstring>

#include "frame/frame.h"

namespace {

constexpr int32_t FOPEN_SUBCODE = 2021;
// Zero bytes written where a count runs past the data's end.
constexpr uint32_t PADDING_CHUNK = 4096;

FHANDLE paramHandle(VMEngine* vm, int n) {
  return static_cast<FHANDLE>(paramGetNL(vm, n));
}

// Writes `count` bytes of the data from `offset`; a count beyond the data's
// end is written in full, zero bytes standing for what lies past it.
uint32_t writeData(VMEngine* vm, FHANDLE handle, const char* data, uint32_t length, uint32_t offset,
                   uint32_t count) {
  uint32_t available = offset < length ? length - offset : 0;
  uint32_t fromData = count < available ? count : available;
  uint32_t written = fsWriteLarge(vm, handle, data + (offset < length ? offset : length), fromData);
  if (written < fromData || count == fromData) return written;
  auto* zeros = static_cast<char*>(vmAlloc(vm, PADDING_CHUNK));
  while (written < count) {
    uint32_t chunk = count - written < PADDING_CHUNK ? count - written : PADDING_CHUNK;
    uint32_t put = fsWriteLarge(vm, handle, zeros, chunk);
    written += put;
    if (put < chunk) break;
  }
  vmFree(vm, zeros);
  return written;
}

}  // namespace

KOVO_FUNC(FOPEN) {
  if (!paramIsString(vm, 1)) {
    argErrorNoSubst(vm, FOPEN_SUBCODE, "FOPEN", 2);
    return;
  }
  auto mode = static_cast<uint16_t>(paramGetNI(vm, 2));
  itemPutNI(vm, returnItem(vm), fsOpen(vm, paramPChar(vm, 1), mode));
}

// Unlike FOPEN, a name that is no string only gives -1.
KOVO_FUNC(FCREATE) {
  if (!paramIsString(vm, 1)) {
    itemPutNI(vm, returnItem(vm), FS_ERROR);
    return;
  }
  auto attribute = static_cast<uint32_t>(paramGetNI(vm, 2));
  itemPutNI(vm, returnItem(vm), fsCreate(vm, paramPChar(vm, 1), attribute));
}

KOVO_FUNC(FREAD) {
  Item* buffer = paramItem(vm, 2, HB_IT_BYREF);
  uint32_t done = 0;
  if (paramIsNumCompat(vm, 1) && buffer && itemIsString(buffer)) {
    auto count = static_cast<uint32_t>(paramGetNL(vm, 3));
    auto offset = static_cast<uint32_t>(paramGetNL(vm, 4));
    uint32_t length = itemStrLen(buffer);
    if (static_cast<uint64_t>(offset) + count <= length) {
      char* bytes = itemGetWriteCL(vm, buffer, &length);
      done = fsReadLarge(vm, paramHandle(vm, 1), bytes + offset, count);
    }
  }
  itemPutNL(vm, returnItem(vm), static_cast<int32_t>(done));
}

KOVO_FUNC(FWRITE) {
  if (!paramIsNumCompat(vm, 1) || !paramIsString(vm, 2)) {
    itemPutNL(vm, returnItem(vm), 0);
    return;
  }
  const Item* data = paramResolved(vm, 2);
  uint32_t length = itemStrLen(data);
  auto offset = static_cast<uint32_t>(paramGetNL(vm, 4));
  uint32_t count = paramIsNumCompat(vm, 3) ? static_cast<uint32_t>(paramGetNL(vm, 3))
                                           : (offset < length ? length - offset : 0);
  uint32_t written = writeData(vm, paramHandle(vm, 1), itemStrPtr(data), length, offset, count);
  itemPutNL(vm, returnItem(vm), static_cast<int32_t>(written));
}

// The text read, up to its first NUL byte; the file moves on by everything read.
KOVO_FUNC(FREADSTR) {
  int32_t count = paramGetNL(vm, 2);
  if (!paramIsNumCompat(vm, 1) || count <= 0) {
    returnEmptyText(vm);
    return;
  }
  auto* buffer = static_cast<char*>(vmTryAlloc(vm, static_cast<size_t>(count) + 1));
  if (!buffer) {
    returnEmptyText(vm);
    return;
  }
  uint32_t got = fsReadLarge(vm, paramHandle(vm, 1), buffer, static_cast<uint32_t>(count));
  buffer[got] = '\0';
  itemPutCPtr(vm, returnItem(vm), buffer, static_cast<uint32_t>(std::strlen(buffer)));
}

KOVO_FUNC(FCLOSE) {
  if (!paramIsNumCompat(vm, 1)) {
    itemPutL(vm, returnItem(vm), false);
    return;
  }
  fsSetError(vm, FS_OK);
  fsClose(vm, paramHandle(vm, 1));
  itemPutL(vm, returnItem(vm), fsError(vm) == FS_OK);
}

KOVO_FUNC(FSEEK) {
  if (!paramIsNumCompat(vm, 1) || !paramIsNumCompat(vm, 2)) {
    itemPutNL(vm, returnItem(vm), 0);
    return;
  }
  // An offset beyond any file (or not a number) stops at the 64-bit limits, which
  // the seek then refuses as the operating system does.
  double wanted = paramGetND(vm, 2);
  int64_t offset = wanted >= 0x1p63     ? INT64_MAX
                   : wanted >= -0x1p63  ? static_cast<int64_t>(wanted)
                   : std::isnan(wanted) ? 0
                                        : INT64_MIN;
  auto origin = static_cast<uint16_t>(paramGetNI(vm, 3));
  itemPutNInt(vm, returnItem(vm), fsSeekLarge(vm, paramHandle(vm, 1), offset, origin));
}

// A sharing violation reads as "access denied", as programs written for DOS expect.
KOVO_FUNC(FERROR) {
  uint16_t code = fsError(vm);
  itemPutNI(vm, returnItem(vm), code == FS_SHARING_VIOLATION ? FS_ACCESS_DENIED : code);
}

KOVO_FUNC(HB_OSERROR) {
  itemPutNI(vm, returnItem(vm), static_cast<uint16_t>(fsOsError(vm)));
}

KOVO_FUNC(HB_FCOMMIT) {
  if (paramIsNumCompat(vm, 1)) fsCommit(vm, paramHandle(vm, 1));
}
