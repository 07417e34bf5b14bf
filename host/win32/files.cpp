// The file layer's handle operations on Windows: CreateFileA with the
// sharing modes of the open mode, and small handle numbers that stand for
// the system's handles, as programs expect.
#include <windows.h>

#include <mutex>
#include <vector>

#include "../file_context.h"

namespace {

// Handle numbers start above the standard ones (0, 1 and 2).
constexpr FHANDLE FIRST_HANDLE = 3;

std::mutex tableMutex;
std::vector<HANDLE> handles;  // by handle number - FIRST_HANDLE; null: free

FHANDLE adopt(HANDLE system) {
  std::lock_guard<std::mutex> lock(tableMutex);
  for (size_t i = 0; i < handles.size(); i++) {
    if (!handles[i]) {
      handles[i] = system;
      return static_cast<FHANDLE>(i) + FIRST_HANDLE;
    }
  }
  handles.push_back(system);
  return static_cast<FHANDLE>(handles.size() - 1) + FIRST_HANDLE;
}

HANDLE systemHandle(FHANDLE handle) {
  switch (handle) {
    case 0:
      return GetStdHandle(STD_INPUT_HANDLE);
    case 1:
      return GetStdHandle(STD_OUTPUT_HANDLE);
    case 2:
      return GetStdHandle(STD_ERROR_HANDLE);
    default:
      break;
  }
  std::lock_guard<std::mutex> lock(tableMutex);
  size_t index = static_cast<size_t>(handle - FIRST_HANDLE);
  if (handle < FIRST_HANDLE || index >= handles.size() || !handles[index])
    return INVALID_HANDLE_VALUE;
  return handles[index];
}

HANDLE release(FHANDLE handle) {
  std::lock_guard<std::mutex> lock(tableMutex);
  size_t index = static_cast<size_t>(handle - FIRST_HANDLE);
  if (handle < FIRST_HANDLE || index >= handles.size() || !handles[index])
    return INVALID_HANDLE_VALUE;
  HANDLE system = handles[index];
  handles[index] = nullptr;
  return system;
}

DWORD desiredAccess(uint16_t mode) {
  switch (mode & 0x03) {
    case FO_READ:
      return GENERIC_READ;
    case FO_WRITE:
      return GENERIC_WRITE;
    default:
      return GENERIC_READ | GENERIC_WRITE;
  }
}

DWORD shareMode(uint16_t mode) {
  switch (mode & 0x70) {
    case FO_EXCLUSIVE:
      return 0;
    case FO_DENYWRITE:
      return FILE_SHARE_READ;
    case FO_DENYREAD:
      return FILE_SHARE_WRITE;
    default:
      return FILE_SHARE_READ | FILE_SHARE_WRITE;
  }
}

FHANDLE opened(VMEngine* vm, HANDLE system) {
  if (system == INVALID_HANDLE_VALUE) {
    fileFailure(vm, GetLastError());
    return FS_ERROR;
  }
  fileSuccess(vm);
  return adopt(system);
}

bool lastCallFailed(VMEngine* vm, BOOL succeeded) {
  if (succeeded) {
    fileSuccess(vm);
    return false;
  }
  fileFailure(vm, GetLastError());
  return true;
}

}  // namespace

FHANDLE fsOpen(VMEngine* vm, const char* name, uint16_t mode) {
  SECURITY_ATTRIBUTES security = {sizeof security, nullptr, (mode & FO_PRIVATE) ? FALSE : TRUE};
  return opened(vm, CreateFileA(name, desiredAccess(mode), shareMode(mode), &security,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

FHANDLE fsCreate(VMEngine* vm, const char* name, uint32_t attribute) {
  DWORD attributes = attribute & (FA_READONLY | FA_HIDDEN | FA_SYSTEM | FA_ARCHIVE);
  return opened(vm, CreateFileA(name, GENERIC_READ | GENERIC_WRITE,
                                FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, CREATE_ALWAYS,
                                attributes ? attributes : FILE_ATTRIBUTE_NORMAL, nullptr));
}

void fsClose(VMEngine* vm, FHANDLE handle) {
  HANDLE system = release(handle);
  if (system == INVALID_HANDLE_VALUE) {
    fileFailure(vm, FS_INVALID_HANDLE);
    return;
  }
  lastCallFailed(vm, CloseHandle(system));
}

uint32_t fsReadLarge(VMEngine* vm, FHANDLE handle, void* buffer, uint32_t count) {
  DWORD done = 0;
  lastCallFailed(vm, ReadFile(systemHandle(handle), buffer, count, &done, nullptr));
  return done;
}

uint16_t fsRead(VMEngine* vm, FHANDLE handle, void* buffer, uint16_t count) {
  return static_cast<uint16_t>(fsReadLarge(vm, handle, buffer, count));
}

// A write of no bytes cuts the file at the current position, as DOS did.
uint32_t fsWriteLarge(VMEngine* vm, FHANDLE handle, const void* buffer, uint32_t count) {
  HANDLE system = systemHandle(handle);
  if (count == 0) {
    lastCallFailed(vm, SetEndOfFile(system));
    return 0;
  }
  DWORD done = 0;
  lastCallFailed(vm, WriteFile(system, buffer, count, &done, nullptr));
  return done;
}

uint16_t fsWrite(VMEngine* vm, FHANDLE handle, const void* buffer, uint16_t count) {
  return static_cast<uint16_t>(fsWriteLarge(vm, handle, buffer, count));
}

int64_t fsSeekLarge(VMEngine* vm, FHANDLE handle, int64_t offset, uint16_t origin) {
  static const DWORD METHOD[] = {FILE_BEGIN, FILE_CURRENT, FILE_END};
  if (origin > FS_END) {
    fileFailure(vm, WIN_INVALID_PARAMETER);
    return -1;
  }
  LARGE_INTEGER distance;
  LARGE_INTEGER position;
  distance.QuadPart = offset;
  if (lastCallFailed(vm,
                     SetFilePointerEx(systemHandle(handle), distance, &position, METHOD[origin])))
    return -1;
  return position.QuadPart;
}

uint32_t fsSeek(VMEngine* vm, FHANDLE handle, int32_t offset, uint16_t origin) {
  return static_cast<uint32_t>(fsSeekLarge(vm, handle, offset, origin));
}

void fsCommit(VMEngine* vm, FHANDLE handle) {
  lastCallFailed(vm, FlushFileBuffers(systemHandle(handle)));
}
