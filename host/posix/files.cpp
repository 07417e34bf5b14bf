// The file layer's handle operations: handles are the descriptors of the
// process, small numbers as the programs expect.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

#include "../file_context.h"
#include "name_space.h"
#include "os_errors.h"
#include "read_ahead.h"
#include "sharing.h"

namespace {

// The access each descriptor was opened for through the layer, so that a
// read through a write-only handle (opened for reading too, for its sharing
// locks) fails as on Windows. 0: not opened by the layer.
constexpr int TRACKED_HANDLES = 1 << 16;
constexpr uint8_t MAY_READ = 1;
constexpr uint8_t MAY_WRITE = 2;
std::atomic<uint8_t> handleAccess[TRACKED_HANDLES];

void trackHandle(int fd, uint8_t access) {
  if (fd < 0 || fd >= TRACKED_HANDLES) return;
  handleAccess[fd].store(access, std::memory_order_relaxed);
  readAheadDrop(fd);
}

bool readOnly(FHANDLE fd) {
  return fd >= 0 && fd < TRACKED_HANDLES &&
         handleAccess[fd].load(std::memory_order_relaxed) == MAY_READ;
}

// Whether the layer opened `fd` without the access `wanted`.
bool refused(FHANDLE fd, uint8_t wanted) {
  if (fd < 0 || fd >= TRACKED_HANDLES) return false;
  uint8_t access = handleAccess[fd].load(std::memory_order_relaxed);
  return access != 0 && !(access & wanted);
}

uint8_t accessOf(uint16_t mode) {
  switch (mode & 0x03) {
    case FO_READ:
      return MAY_READ;
    case FO_WRITE:
      return MAY_WRITE;
    default:
      return MAY_READ | MAY_WRITE;
  }
}

bool readOnlyFile(const struct stat& info) {
  return (info.st_mode & 0222) == 0;
}

FHANDLE failWith(VMEngine* vm, uint32_t code, int fd = -1) {
  if (fd >= 0) close(fd);
  fileFailure(vm, code);
  return FS_ERROR;
}

// A descriptor just opened becomes a handle once it is a file (Windows opens
// no directory as a file), may be written when asked (a read-only file may
// not, whoever runs the program) and its sharing agrees with the other opens.
FHANDLE admit(VMEngine* vm, int fd, uint16_t mode, bool created = false) {
  struct stat info;
  if (fstat(fd, &info) != 0) return failWith(vm, windowsCode(errno), fd);
  uint8_t access = accessOf(mode);
  if (S_ISDIR(info.st_mode) || ((access & MAY_WRITE) && !created && readOnlyFile(info)))
    return failWith(vm, FS_ACCESS_DENIED, fd);
  if (!takeSharing(fd, mode)) return failWith(vm, FS_SHARING_VIOLATION, fd);
  trackHandle(fd, access);
  fileSuccess(vm);
  return fd;
}

}  // namespace

FHANDLE fsOpen(VMEngine* vm, const char* name, uint16_t mode) {
  ResolvedName target = resolveName(name);
  if (target.status != NameStatus::Exists) return failWith(vm, missingNameCode(target.status));
  uint8_t access = accessOf(mode);
  // Opened for reading as well wherever that is allowed: the sharing locks
  // need it.
  int fd = open(target.path.c_str(), (access == MAY_READ ? O_RDONLY : O_RDWR) | O_CLOEXEC);
  if (fd < 0 && access == MAY_WRITE && errno == EACCES)
    fd = open(target.path.c_str(), O_WRONLY | O_CLOEXEC);
  if (fd < 0) return failWith(vm, windowsCode(errno));
  return admit(vm, fd, mode);
}

FHANDLE fsCreate(VMEngine* vm, const char* name, uint32_t attribute) {
  ResolvedName target = resolveName(name);
  if (target.status == NameStatus::NoDrive || target.status == NameStatus::PathMissing)
    return failWith(vm, FS_PATH_NOT_FOUND);
  mode_t permissions = (attribute & FA_READONLY) ? 0444 : 0666;
  bool existed = target.status == NameStatus::Exists;
  // Not truncated before the sharing check: a file that another holds stays whole.
  int fd = open(target.path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, permissions);
  if (fd < 0) return failWith(vm, windowsCode(errno));
  FHANDLE handle = admit(vm, fd, FO_READWRITE, !existed);
  if (handle == FS_ERROR) return handle;
  if (existed) {
    readAheadInvalidate();
    if (ftruncate(fd, 0) != 0) return failWith(vm, windowsCode(errno), fd);
  }
  if (attribute & (FA_HIDDEN | FA_SYSTEM)) fsNativeSetAttributes(target.path.c_str(), attribute);
  return handle;
}

void fsClose(VMEngine* vm, FHANDLE handle) {
  trackHandle(handle, 0);
  if (close(handle) != 0) {
    fileFailure(vm, windowsCode(errno));
    return;
  }
  fileSuccess(vm);
}

namespace {

// Moves up to `count` bytes with `step` (a read or a write at an offset into
// the buffer), again after an interruption; the failure goes to the cell.
template <typename Step>
uint32_t moveAll(VMEngine* vm, uint32_t count, Step step) {
  uint32_t done = 0;
  while (done < count) {
    ssize_t moved = step(done);
    if (moved < 0) {
      if (errno == EINTR) continue;
      fileFailure(vm, windowsCode(errno));
      return done;
    }
    if (moved == 0) break;
    done += static_cast<uint32_t>(moved);
  }
  fileSuccess(vm);
  return done;
}

uint32_t readAll(VMEngine* vm, FHANDLE handle, void* buffer, uint32_t count) {
  if (refused(handle, MAY_READ)) return failWith(vm, FS_ACCESS_DENIED), 0;
  if (count == 0 && read(handle, nullptr, 0) < 0) return failWith(vm, windowsCode(errno)), 0;
  auto* out = static_cast<char*>(buffer);
  if (readOnly(handle)) {
    uint32_t done = 0;
    if (readAheadRead(handle, out, count, &done)) {
      fileSuccess(vm);
    } else {
      fileFailure(vm, windowsCode(errno));
    }
    return done;
  }
  return moveAll(vm, count, [&](uint32_t done) { return read(handle, out + done, count - done); });
}

// A write of no bytes cuts the file at the current position, as DOS did.
uint32_t writeAll(VMEngine* vm, FHANDLE handle, const void* buffer, uint32_t count) {
  if (refused(handle, MAY_WRITE)) return failWith(vm, FS_ACCESS_DENIED), 0;
  readAheadInvalidate();
  if (count == 0) {
    off_t here = lseek(handle, 0, SEEK_CUR);
    if (here < 0 || ftruncate(handle, here) != 0) {
      fileFailure(vm, windowsCode(errno));
    } else {
      fileSuccess(vm);
    }
    return 0;
  }
  const auto* in = static_cast<const char*>(buffer);
  return moveAll(vm, count, [&](uint32_t done) { return write(handle, in + done, count - done); });
}

}  // namespace

uint16_t fsRead(VMEngine* vm, FHANDLE handle, void* buffer, uint16_t count) {
  return static_cast<uint16_t>(readAll(vm, handle, buffer, count));
}

uint32_t fsReadLarge(VMEngine* vm, FHANDLE handle, void* buffer, uint32_t count) {
  return readAll(vm, handle, buffer, count);
}

uint16_t fsWrite(VMEngine* vm, FHANDLE handle, const void* buffer, uint16_t count) {
  return static_cast<uint16_t>(writeAll(vm, handle, buffer, count));
}

uint32_t fsWriteLarge(VMEngine* vm, FHANDLE handle, const void* buffer, uint32_t count) {
  return writeAll(vm, handle, buffer, count);
}

int64_t fsSeekLarge(VMEngine* vm, FHANDLE handle, int64_t offset, uint16_t origin) {
  static const int WHENCE[] = {SEEK_SET, SEEK_CUR, SEEK_END};
  if (origin > FS_END) return failWith(vm, WIN_INVALID_PARAMETER);
  int64_t ahead;
  if (readOnly(handle) && readAheadSeek(handle, offset, WHENCE[origin], &ahead)) {
    fileSuccess(vm);
    return ahead;
  }
  off_t position = lseek(handle, offset, WHENCE[origin]);
  if (position < 0) {
    // Before the start of the file: Windows's own code for it.
    return failWith(vm, errno == EINVAL ? WIN_NEGATIVE_SEEK : windowsCode(errno));
  }
  fileSuccess(vm);
  return position;
}

uint32_t fsSeek(VMEngine* vm, FHANDLE handle, int32_t offset, uint16_t origin) {
  return static_cast<uint32_t>(fsSeekLarge(vm, handle, offset, origin));
}

void fsCommit(VMEngine* vm, FHANDLE handle) {
  if (fsync(handle) != 0 && errno != EINVAL) {
    fileFailure(vm, windowsCode(errno));
    return;
  }
  fileSuccess(vm);
}
