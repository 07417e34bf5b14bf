// The file layer's operations on names: deleting, renaming, directories,
// drives, and the name space for the calls beside the layer.
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "../file_context.h"
#include "attributes.h"
#include "kovo/host_items.h"
#include "name_space.h"
#include "os_errors.h"
#include "sharing.h"

namespace {

// Hidden and system bits live here, as text ("0x22"), where the file system
// keeps extended attributes.
constexpr char DOS_ATTRIBUTE_NAME[] = "user.kovo.dosattrib";
constexpr uint32_t STORED_BITS = FA_HIDDEN | FA_SYSTEM;

bool fail(VMEngine* vm, uint32_t code) {
  fileFailure(vm, code);
  return false;
}

bool succeed(VMEngine* vm) {
  fileSuccess(vm);
  return true;
}

// The name of an existing entry, or the failure's code.
bool existing(const char* name, ResolvedName* target, uint32_t* code) {
  *target = resolveName(name);
  if (target->status == NameStatus::Exists) return true;
  *code = missingNameCode(target->status);
  return false;
}

const char* baseName(const char* path) {
  const char* slash = std::strrchr(path, '/');
  return slash ? slash + 1 : path;
}

}  // namespace

bool fsDelete(VMEngine* vm, const char* name) {
  ResolvedName target;
  uint32_t code;
  if (!existing(name, &target, &code)) return fail(vm, code);
  struct stat info;
  if (lstat(target.path.c_str(), &info) != 0) return fail(vm, windowsCode(errno));
  if (S_ISDIR(info.st_mode) || (info.st_mode & 0222) == 0) return fail(vm, FS_ACCESS_DENIED);
  if (heldOpen(target.path.c_str(), false)) return fail(vm, FS_SHARING_VIOLATION);
  if (unlink(target.path.c_str()) != 0) return fail(vm, windowsCode(errno));
  return succeed(vm);
}

bool fsRename(VMEngine* vm, const char* oldName, const char* newName) {
  ResolvedName from;
  uint32_t code;
  if (!existing(oldName, &from, &code)) return fail(vm, code);
  ResolvedName to = resolveName(newName);
  if (to.status == NameStatus::NoDrive || to.status == NameStatus::PathMissing)
    return fail(vm, FS_PATH_NOT_FOUND);
  if (to.status == NameStatus::Exists) {
    struct stat a, b;
    bool same = stat(from.path.c_str(), &a) == 0 && stat(to.path.c_str(), &b) == 0 &&
                a.st_dev == b.st_dev && a.st_ino == b.st_ino;
    if (!same) return fail(vm, WIN_ALREADY_EXISTS);
    // A change of letter case alone: the new name as it is written.
    std::string written = to.path.substr(0, to.path.rfind('/') + 1);
    const char* last = newName + std::strlen(newName);
    const char* start = last;
    while (start > newName && start[-1] != '\\' && start[-1] != '/' && start[-1] != ':')
      start--;
    to.path = written + std::string(start, last);
  }
  if (heldOpen(from.path.c_str(), false)) return fail(vm, FS_SHARING_VIOLATION);
  if (rename(from.path.c_str(), to.path.c_str()) != 0) return fail(vm, windowsCode(errno));
  return succeed(vm);
}

bool fsFile(VMEngine* vm, const char* name) {
  if (std::strpbrk(name, "*?")) {
    FileFindInfo* found = fsFindFirstQuiet(vm, name, FA_HIDDEN | FA_SYSTEM);
    if (found) fsFindClose(vm, found);
    return found != nullptr;
  }
  ResolvedName target = resolveName(name);
  struct stat info;
  return target.status == NameStatus::Exists && stat(target.path.c_str(), &info) == 0 &&
         !S_ISDIR(info.st_mode);
}

bool fsMkDir(VMEngine* vm, const char* name) {
  ResolvedName target = resolveName(name);
  if (target.status == NameStatus::NoDrive || target.status == NameStatus::PathMissing)
    return fail(vm, FS_PATH_NOT_FOUND);
  // Whatever is in the way, file or directory: Windows's "already exists".
  if (target.status == NameStatus::Exists) return fail(vm, WIN_ALREADY_EXISTS);
  if (mkdir(target.path.c_str(), 0777) != 0)
    return fail(vm, errno == EEXIST ? WIN_ALREADY_EXISTS : windowsCode(errno));
  return succeed(vm);
}

bool fsChDir(VMEngine* vm, const char* name) {
  uint32_t code = changeDirectory(name);
  return code ? fail(vm, code) : succeed(vm);
}

uint16_t fsChDrv(VMEngine* vm, int drive) {
  uint32_t code = changeDrive(drive);
  fileFailure(vm, code);
  return cellCode(code);
}

int fsCurDrv(VMEngine*) {
  return currentDrive();
}

uint16_t fsCurDirBuff(VMEngine* vm, int drive, char* buffer, uint32_t size) {
  int which = drive == 0 ? currentDrive() : drive - 1;
  std::string native = driveDirectory(which);
  if (size > 0) buffer[0] = '\0';
  if (native.empty()) {
    fileFailure(vm, FS_PATH_NOT_FOUND);
    return FS_PATH_NOT_FOUND;
  }
  std::string below = directoryBelowRoot(currentDrives(), which, native);
  if (below.size() >= size) {
    fileFailure(vm, FS_NAME_TOO_LONG);
    return FS_NAME_TOO_LONG;
  }
  std::memcpy(buffer, below.c_str(), below.size() + 1);
  fileSuccess(vm);
  return 0;
}

uint16_t fsCurDirBuffEx(VMEngine* vm, int drive, char* buffer, uint32_t size) {
  return fsCurDirBuff(vm, drive, buffer, size);
}

const char* fsCurDir(VMEngine* vm, int drive) {
  static thread_local char buffer[4096];
  fsCurDirBuff(vm, drive, buffer, sizeof buffer);
  return buffer;
}

char* fsNameToNative(VMEngine* vm, const char* name, uint32_t* error) {
  ResolvedName target = resolveName(name);
  if (target.status == NameStatus::NoDrive || target.status == NameStatus::PathMissing) {
    *error = FS_PATH_NOT_FOUND;
    return nullptr;
  }
  *error = 0;
  auto* copy = static_cast<char*>(vmAlloc(vm, target.path.size() + 1));
  std::memcpy(copy, target.path.c_str(), target.path.size());
  return copy;
}

bool fsNameFromNative(const char* native, char* buffer, uint32_t size) {
  std::string form;
  if (!windowsForm(currentDrives(), native, &form) || form.size() >= size) return false;
  std::memcpy(buffer, form.c_str(), form.size() + 1);
  return true;
}

uint32_t attributesOf(const char* native, const struct stat& info) {
  uint32_t attributes = S_ISDIR(info.st_mode) ? FA_DIRECTORY : FA_ARCHIVE;
  if ((info.st_mode & 0222) == 0) attributes |= FA_READONLY;
  const char* base = baseName(native);
  if (base[0] == '.' && std::strcmp(base, ".") != 0 && std::strcmp(base, "..") != 0)
    attributes |= FA_HIDDEN;
  char stored[16];
  ssize_t length = getxattr(native, DOS_ATTRIBUTE_NAME, stored, sizeof stored - 1);
  if (length > 0) {
    stored[length] = '\0';
    attributes |= static_cast<uint32_t>(std::strtoul(stored, nullptr, 16)) & STORED_BITS;
  }
  return attributes;
}

uint32_t fsNativeAttributes(const char* native) {
  struct stat info;
  return stat(native, &info) == 0 ? attributesOf(native, info) : FA_INVALID;
}

uint32_t fsNativeSetAttributes(const char* native, uint32_t attributes) {
  struct stat info;
  if (stat(native, &info) != 0) return windowsCode(errno);
  if (heldOpen(native, true)) return FS_ACCESS_DENIED;
  // Read-only: nobody may write; its absence gives the owner write back.
  mode_t mode = (attributes & FA_READONLY) ? (info.st_mode & ~0222) : (info.st_mode | 0200);
  if (chmod(native, mode & 07777) != 0) return windowsCode(errno);
  if (attributes & STORED_BITS) {
    char text[16];
    int length = std::snprintf(text, sizeof text, "0x%X", attributes & (STORED_BITS | FA_ARCHIVE));
    if (setxattr(native, DOS_ATTRIBUTE_NAME, text, static_cast<size_t>(length), 0) != 0 &&
        errno != ENOTSUP)
      return windowsCode(errno);
  } else if (removexattr(native, DOS_ATTRIBUTE_NAME) != 0 && errno != ENODATA && errno != ENOTSUP) {
    return windowsCode(errno);
  }
  return 0;
}
