#include "sharing.h"

#include <fcntl.h>
#include <unistd.h>

#include "kovo/host_files.h"

namespace {

// The last 16 bytes below the largest offset: no file grows that far.
constexpr off_t LOCK_BASE = 0x7FFFFFFFFFFFFFF0;
enum LockByte : off_t { ACCESS_READ = 0, ACCESS_WRITE = 1, DENY_READ = 2, DENY_WRITE = 3 };

bool lockShared(int fd, LockByte byte) {
  struct flock lock = {};
  lock.l_type = F_RDLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = LOCK_BASE + byte;
  lock.l_len = 1;
  return fcntl(fd, F_OFD_SETLK, &lock) == 0;
}

// Whether another open file holds a lock on the bytes; the own ones do not count.
bool heldByOthers(int fd, LockByte first, off_t count) {
  struct flock lock = {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = LOCK_BASE + first;
  lock.l_len = count;
  if (fcntl(fd, F_OFD_GETLK, &lock) != 0) return false;
  return lock.l_type != F_UNLCK;
}

}  // namespace

bool takeSharing(int fd, uint16_t mode) {
  uint16_t access = mode & 0x03;
  bool reads = access != FO_WRITE;
  bool writes = access != FO_READ;
  uint16_t share = mode & 0x70;
  bool denyRead = share == FO_EXCLUSIVE || share == FO_DENYREAD;
  bool denyWrite = share == FO_EXCLUSIVE || share == FO_DENYWRITE;
  // Locks first, checks after: of two opens racing, one may fail for nothing,
  // but never may both succeed.
  if ((reads && !lockShared(fd, ACCESS_READ)) || (writes && !lockShared(fd, ACCESS_WRITE)) ||
      (denyRead && !lockShared(fd, DENY_READ)) || (denyWrite && !lockShared(fd, DENY_WRITE)))
    return true;  // a file system without locks shares everything
  return !((reads && heldByOthers(fd, DENY_READ, 1)) ||
           (writes && heldByOthers(fd, DENY_WRITE, 1)) ||
           (denyRead && heldByOthers(fd, ACCESS_READ, 1)) ||
           (denyWrite && heldByOthers(fd, ACCESS_WRITE, 1)));
}

bool heldOpen(const char* path, bool denyingWrite) {
  int fd = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (fd < 0) return false;
  bool held = heldByOthers(fd, denyingWrite ? DENY_WRITE : ACCESS_READ, denyingWrite ? 1 : 4);
  close(fd);
  return held;
}
