// The file layer's operations on names on Windows: the system's own name
// space, drives and current directories.
#include <direct.h>
#include <windows.h>

#include <cstring>

#include "../file_context.h"
#include "kovo/host_items.h"

namespace {

bool outcome(VMEngine* vm, BOOL succeeded) {
  if (!succeeded) {
    fileFailure(vm, GetLastError());
    return false;
  }
  fileSuccess(vm);
  return true;
}

}  // namespace

bool fsDelete(VMEngine* vm, const char* name) {
  return outcome(vm, DeleteFileA(name));
}

bool fsRename(VMEngine* vm, const char* oldName, const char* newName) {
  return outcome(vm, MoveFileA(oldName, newName));
}

bool fsFile(VMEngine* vm, const char* name) {
  FileFindInfo* found = fsFindFirstQuiet(vm, name, FA_HIDDEN | FA_SYSTEM);
  if (found) fsFindClose(vm, found);
  return found != nullptr;
}

bool fsMkDir(VMEngine* vm, const char* name) {
  return outcome(vm, CreateDirectoryA(name, nullptr));
}

bool fsChDir(VMEngine* vm, const char* name) {
  return outcome(vm, SetCurrentDirectoryA(name));
}

uint16_t fsChDrv(VMEngine* vm, int drive) {
  uint32_t code = _chdrive(drive + 1) == 0 ? 0 : FS_PATH_NOT_FOUND;
  fileFailure(vm, code);
  return cellCode(code);
}

int fsCurDrv(VMEngine*) {
  return _getdrive() - 1;
}

uint16_t fsCurDirBuff(VMEngine* vm, int drive, char* buffer, uint32_t size) {
  char full[MAX_PATH + 1];
  if (size > 0) buffer[0] = '\0';
  if (!_getdcwd(drive, full, sizeof full)) {
    fileFailure(vm, FS_PATH_NOT_FOUND);
    return FS_PATH_NOT_FOUND;
  }
  // Without the drive and the root's backslash: "C:\DIR" gives "DIR".
  const char* below = full;
  if (below[0] && below[1] == ':') below += 2;
  if (*below == '\\') below++;
  size_t length = std::strlen(below);
  if (length >= size) {
    fileFailure(vm, FS_NAME_TOO_LONG);
    return FS_NAME_TOO_LONG;
  }
  std::memcpy(buffer, below, length + 1);
  fileSuccess(vm);
  return 0;
}

uint16_t fsCurDirBuffEx(VMEngine* vm, int drive, char* buffer, uint32_t size) {
  return fsCurDirBuff(vm, drive, buffer, size);
}

const char* fsCurDir(VMEngine* vm, int drive) {
  static thread_local char buffer[MAX_PATH + 1];
  fsCurDirBuff(vm, drive, buffer, sizeof buffer);
  return buffer;
}

char* fsNameToNative(VMEngine* vm, const char* name, uint32_t* error) {
  size_t length = std::strlen(name);
  auto* copy = static_cast<char*>(vmAlloc(vm, length + 1));
  std::memcpy(copy, name, length);
  *error = 0;
  return copy;
}

bool fsNameFromNative(const char* native, char* buffer, uint32_t size) {
  size_t length = std::strlen(native);
  if (length >= size) return false;
  std::memcpy(buffer, native, length + 1);
  return true;
}

uint32_t fsNativeAttributes(const char* native) {
  return GetFileAttributesA(native);
}

uint32_t fsNativeSetAttributes(const char* native, uint32_t attributes) {
  return SetFileAttributesA(native, attributes) ? 0 : GetLastError();
}
