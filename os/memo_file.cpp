// Whole files as memo text: MEMOWRIT ends the text with the end-of-file mark
// (Ctrl-Z), MEMOREAD drops such a mark.
#include "frame/frame.h"

namespace {

constexpr char END_OF_FILE_MARK = 26;
constexpr uint16_t MEMOREAD_MODE = FO_READ | FO_DENYNONE | FO_PRIVATE;

}  // namespace

KOVO_FUNC(MEMOREAD) {
  FHANDLE handle = paramIsString(vm, 1) ? fsOpen(vm, paramPChar(vm, 1), MEMOREAD_MODE) : FS_ERROR;
  if (handle == FS_ERROR) {
    returnEmptyText(vm);
    return;
  }
  int64_t size = fsSeekLarge(vm, handle, 0, FS_END);
  char last = 0;
  if (size > 0 && fsSeekLarge(vm, handle, -1, FS_END) >= 0 && fsRead(vm, handle, &last, 1) == 1 &&
      last == END_OF_FILE_MARK)
    size--;
  char* buffer = nullptr;
  // Unfilled: the read writes every byte the string keeps, and zeroing a large
  // buffer first would cost as much as the copy.
  if (size > 0 && static_cast<uint64_t>(size) < STRING_LENGTH_LIMIT)
    buffer = static_cast<char*>(vmTryReallocUnfilled(vm, nullptr, static_cast<size_t>(size) + 1));
  if (!buffer) {
    returnEmptyText(vm);
  } else {
    fsSeekLarge(vm, handle, 0, FS_SET);
    uint32_t got = fsReadLarge(vm, handle, buffer, static_cast<uint32_t>(size));
    buffer[got] = '\0';
    itemPutCPtr(vm, returnItem(vm), buffer, got);
  }
  fsClose(vm, handle);
}

KOVO_FUNC(MEMOWRIT) {
  bool written = false;
  if (paramIsString(vm, 1) && paramIsString(vm, 2)) {
    FHANDLE handle = fsCreate(vm, paramPChar(vm, 1), 0);
    if (handle != FS_ERROR) {
      const Item* text = paramResolved(vm, 2);
      uint32_t length = itemStrLen(text);
      written = fsWriteLarge(vm, handle, itemStrPtr(text), length) == length;
      fsWrite(vm, handle, &END_OF_FILE_MARK, 1);
      fsClose(vm, handle);
    }
  }
  itemPutL(vm, returnItem(vm), written);
}
