#include "os_errors.h"

#include <cerrno>

#include "../file_context.h"

uint32_t windowsCode(int error) {
  switch (error) {
    case 0:
      return 0;
    case ENOENT:
      return FS_FILE_NOT_FOUND;
    case ENOTDIR:
    case ELOOP:
      return FS_PATH_NOT_FOUND;
    case EMFILE:
    case ENFILE:
      return FS_TOO_MANY_OPEN;
    case EACCES:
    case EPERM:
    case EISDIR:
      return FS_ACCESS_DENIED;
    case EBADF:
      return FS_INVALID_HANDLE;
    case EXDEV:
      return FS_NOT_SAME_DEVICE;
    case EBUSY:
    case ETXTBSY:
      return FS_SHARING_VIOLATION;
    case EAGAIN:
      return WIN_LOCK_VIOLATION;
    case EEXIST:
      return FS_FILE_EXISTS;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return FS_DISK_FULL;
    case ENAMETOOLONG:
      return FS_NAME_TOO_LONG;
    case EROFS:
      return WIN_WRITE_PROTECT;
    case ENOTEMPTY:
      return WIN_DIR_NOT_EMPTY;
    case EINVAL:
      return WIN_INVALID_PARAMETER;
    default:
      return WIN_GEN_FAILURE;
  }
}

uint32_t missingNameCode(NameStatus status) {
  return status == NameStatus::Missing ? FS_FILE_NOT_FOUND : FS_PATH_NOT_FOUND;
}
