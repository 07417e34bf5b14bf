// The direct file services on POSIX: names go through the host's name space;
// attributes, searches and drives are those the host derives from the file
// system; times are the process's local time.
#include "os/file_system.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <initializer_list>

#include "kovo/host.h"

namespace {

// The operating system's name for `name`, freed at the end of the scope.
class NativeName {
 public:
  NativeName(VMEngine* vm, const char* name) : vm_(vm) {
    uint32_t error = 0;
    text_ = fsNameToNative(vm, name, &error);
    error_ = error;
  }
  ~NativeName() {
    if (text_) vmFree(vm_, text_);
  }
  NativeName(const NativeName&) = delete;
  NativeName& operator=(const NativeName&) = delete;
  const char* text() const { return text_; }
  uint32_t error() const { return error_; }

 private:
  VMEngine* vm_;
  char* text_;
  uint32_t error_;
};

void fillRecord(const FileFindInfo& found, OsFindRecord* record) {
  record->attributes = found.attributes;
  record->sizeHigh = static_cast<uint32_t>(static_cast<uint64_t>(found.size) >> 32);
  record->sizeLow = static_cast<uint32_t>(found.size);
  record->writeTime = found.writeTime;
  std::memcpy(record->name, found.name, sizeof record->name);
}

bool localParts(int64_t stamp, struct tm* parts) {
  time_t seconds = static_cast<time_t>(stamp);
  return localtime_r(&seconds, parts) != nullptr;
}

}  // namespace

uint32_t osFileAttributes(VMEngine* vm, const char* name) {
  NativeName native(vm, name);
  return native.text() ? fsNativeAttributes(native.text()) : FA_INVALID;
}

uint32_t osSetFileAttributes(VMEngine* vm, const char* name, uint32_t attributes) {
  NativeName native(vm, name);
  if (!native.text()) return native.error();
  return fsNativeSetAttributes(native.text(), attributes);
}

void* osFindFirst(VMEngine* vm, const char* mask, OsFindRecord* record) {
  FileFindInfo* found =
      fsFindFirstQuiet(vm, mask, FA_HIDDEN | FA_SYSTEM | FA_DIRECTORY | FA_READONLY | FA_ARCHIVE);
  if (found) fillRecord(*found, record);
  return found;
}

bool osFindNext(VMEngine* vm, void* search, OsFindRecord* record) {
  auto* found = static_cast<FileFindInfo*>(search);
  if (!fsFindNext(vm, found)) return false;
  fillRecord(*found, record);
  return true;
}

void osFindClose(VMEngine* vm, void* search) {
  fsFindClose(vm, static_cast<FileFindInfo*>(search));
}

bool osFormatWriteDate(const OsFindRecord& record, char out[9]) {
  struct tm parts;
  return localParts(record.writeTime, &parts) && strftime(out, 9, "%Y%m%d", &parts) == 8;
}

bool osFormatWriteTime(const OsFindRecord& record, char out[9]) {
  struct tm parts;
  return localParts(record.writeTime, &parts) && strftime(out, 9, "%H:%M:%S", &parts) == 8;
}

bool osSetFileTimes(VMEngine* vm, const char* name, const OsLocalTime& when, bool haveDate,
                    bool haveTime) {
  NativeName native(vm, name);
  if (!native.text()) return false;
  int fd = open(native.text(), O_RDWR | O_CLOEXEC);
  if (fd < 0) return false;
  struct tm parts = {};
  if (!haveDate || !haveTime) {
    time_t now = time(nullptr);
    localtime_r(&now, &parts);
  }
  if (haveDate) {
    parts.tm_year = when.year - 1900;
    parts.tm_mon = when.month - 1;
    parts.tm_mday = when.day;
  }
  if (haveTime) {
    parts.tm_hour = when.hour;
    parts.tm_min = when.minute;
    parts.tm_sec = when.second;
  }
  parts.tm_isdst = -1;
  time_t stamp = mktime(&parts);
  struct timespec times[2] = {{stamp, 0}, {stamp, 0}};
  bool set = stamp != static_cast<time_t>(-1) && futimens(fd, times) == 0;
  close(fd);
  return set;
}

int osDriveType(VMEngine* vm, const char* root) {
  NativeName native(vm, root);
  struct statfs info;
  if (!native.text() || statfs(native.text(), &info) != 0) return DRIVETYPE_OTHER;
  switch (static_cast<unsigned long>(info.f_type)) {
    case NFS_SUPER_MAGIC:
    case SMB_SUPER_MAGIC:
    case 0xFF534D42:  // CIFS
    case 0xFE534D42:  // SMB2
      return DRIVETYPE_REMOTE;
    case ISOFS_SUPER_MAGIC:
    case 0x15013346:  // UDF
      return DRIVETYPE_CDROM;
    case TMPFS_MAGIC:
    case RAMFS_MAGIC:
      return DRIVETYPE_RAM;
    default:
      return DRIVETYPE_FIXED;
  }
}

bool osExecutableName(char* buffer, uint32_t size) {
  char native[4096];
  ssize_t length = readlink("/proc/self/exe", native, sizeof native - 1);
  if (length <= 0) return false;
  native[length] = '\0';
  return fsNameFromNative(native, buffer, size);
}

namespace {

// The first of TEMP, TMP and TMPDIR that is set, else /tmp, as a native name.
const char* nativeTempDirectory() {
  for (const char* variable : {"TEMP", "TMP", "TMPDIR"}) {
    const char* value = std::getenv(variable);
    if (value && *value) return value;
  }
  return "/tmp";
}

// A directory from the environment in the Windows form with a trailing
// backslash; a value already in the Windows form stays as it is.
uint32_t windowsDirectory(const char* value, char* buffer, uint32_t size) {
  if (value[0] == '/') {
    char absolute[4096];
    if (!realpath(value, absolute) || !fsNameFromNative(absolute, buffer, size)) return 0;
  } else {
    if (std::strlen(value) >= size) return 0;
    std::strcpy(buffer, value);
  }
  size_t length = std::strlen(buffer);
  if (length == 0 || buffer[length - 1] != '\\') {
    if (length + 2 > size) return 0;
    buffer[length++] = '\\';
    buffer[length] = '\0';
  }
  return static_cast<uint32_t>(length);
}

}  // namespace

uint32_t osTempPath(char* buffer, uint32_t size) {
  return windowsDirectory(nativeTempDirectory(), buffer, size);
}

// A Windows machine always has TEMP; where it is not set the system's
// temporary directory stands in.
bool osTempDirectory(char* buffer, uint32_t size) {
  const char* value = std::getenv("TEMP");
  return windowsDirectory(value && *value ? value : nativeTempDirectory(), buffer, size) != 0;
}
