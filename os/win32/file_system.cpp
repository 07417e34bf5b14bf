// The direct file services on Windows: the Win32 calls themselves.
#include "os/file_system.h"

#include <windows.h>

#include <cstring>

namespace {

struct Search {
  HANDLE handle;
};

void fillRecord(const WIN32_FIND_DATAA& data, OsFindRecord* record) {
  record->attributes = data.dwFileAttributes;
  record->sizeHigh = data.nFileSizeHigh;
  record->sizeLow = data.nFileSizeLow;
  record->writeTime = (static_cast<int64_t>(data.ftLastWriteTime.dwHighDateTime) << 32) |
                      data.ftLastWriteTime.dwLowDateTime;
  std::memcpy(record->name, data.cFileName, sizeof record->name);
}

bool localSystemTime(const OsFindRecord& record, SYSTEMTIME* local) {
  FILETIME utc;
  FILETIME localTime;
  utc.dwLowDateTime = static_cast<DWORD>(record.writeTime);
  utc.dwHighDateTime = static_cast<DWORD>(static_cast<uint64_t>(record.writeTime) >> 32);
  return FileTimeToLocalFileTime(&utc, &localTime) && FileTimeToSystemTime(&localTime, local);
}

}  // namespace

uint32_t osFileAttributes(VMEngine*, const char* name) {
  return GetFileAttributesA(name);
}

uint32_t osSetFileAttributes(VMEngine*, const char* name, uint32_t attributes) {
  return SetFileAttributesA(name, attributes) ? 0 : GetLastError();
}

void* osFindFirst(VMEngine*, const char* mask, OsFindRecord* record) {
  WIN32_FIND_DATAA data;
  HANDLE handle = FindFirstFileA(mask, &data);
  if (handle == INVALID_HANDLE_VALUE) return nullptr;
  fillRecord(data, record);
  return new Search{handle};
}

bool osFindNext(VMEngine*, void* search, OsFindRecord* record) {
  WIN32_FIND_DATAA data;
  if (!FindNextFileA(static_cast<Search*>(search)->handle, &data)) return false;
  fillRecord(data, record);
  return true;
}

void osFindClose(VMEngine*, void* search) {
  auto* owned = static_cast<Search*>(search);
  FindClose(owned->handle);
  delete owned;
}

bool osFormatWriteDate(const OsFindRecord& record, char out[9]) {
  SYSTEMTIME local;
  return localSystemTime(record, &local) &&
         GetDateFormatA(LOCALE_USER_DEFAULT, 0, &local, "yyyyMMdd", out, 9) == 9;
}

bool osFormatWriteTime(const OsFindRecord& record, char out[9]) {
  SYSTEMTIME local;
  return localSystemTime(record, &local) &&
         GetTimeFormatA(LOCALE_USER_DEFAULT, 0, &local, "HH':'mm':'ss", out, 9) == 9;
}

bool osSetFileTimes(VMEngine*, const char* name, const OsLocalTime& when, bool haveDate,
                    bool haveTime) {
  HFILE file = _lopen(name, OF_READWRITE);
  if (file == HFILE_ERROR) return false;
  SYSTEMTIME local = {};
  if (!haveDate || !haveTime) GetLocalTime(&local);
  if (haveDate) {
    local.wYear = static_cast<WORD>(when.year);
    local.wMonth = static_cast<WORD>(when.month);
    local.wDay = static_cast<WORD>(when.day);
  }
  if (haveTime) {
    local.wHour = static_cast<WORD>(when.hour);
    local.wMinute = static_cast<WORD>(when.minute);
    local.wSecond = static_cast<WORD>(when.second);
    local.wMilliseconds = 0;
  }
  FILETIME localTime;
  FILETIME utc;
  bool set =
      SystemTimeToFileTime(&local, &localTime) && LocalFileTimeToFileTime(&localTime, &utc) &&
      SetFileTime(reinterpret_cast<HANDLE>(static_cast<intptr_t>(file)), nullptr, &utc, &utc);
  _lclose(file);
  return set;
}

int osDriveType(VMEngine*, const char* root) {
  switch (GetDriveTypeA(root)) {
    case DRIVE_RAMDISK:
      return DRIVETYPE_RAM;
    case DRIVE_REMOVABLE:
      return DRIVETYPE_REMOVABLE;
    case DRIVE_FIXED:
      return DRIVETYPE_FIXED;
    case DRIVE_CDROM:
      return DRIVETYPE_CDROM;
    case DRIVE_REMOTE:
      return DRIVETYPE_REMOTE;
    default:
      return DRIVETYPE_OTHER;
  }
}

bool osExecutableName(char* buffer, uint32_t size) {
  DWORD length = GetModuleFileNameA(nullptr, buffer, size);
  return length > 0 && length < size;
}

uint32_t osTempPath(char* buffer, uint32_t size) {
  DWORD length = GetTempPathA(size, buffer);
  return length < size ? length : 0;
}

bool osTempDirectory(char* buffer, uint32_t size) {
  DWORD length = GetEnvironmentVariableA("TEMP", buffer, size);
  return length > 0 && length < size;
}
