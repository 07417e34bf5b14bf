// The operating system's file services that the attribute, size, time-stamp,
// search, drive and program-path functions call directly, beside the host's
// file layer: none of them touches the layer's error cell.
#pragma once

#include <cstdint>

#include "kovo/vmengine.h"

// One entry of a directory search, in the layout the functions read.
struct OsFindRecord {
  uint32_t attributes;  // Windows attribute bits
  uint32_t sizeHigh;
  uint32_t sizeLow;
  int64_t writeTime;  // the platform's time stamp, read only by osFormatWrite*
  char name[260];
};

// The Windows attribute word of a name, 0xFFFFFFFF when it does not exist.
uint32_t osFileAttributes(VMEngine* vm, const char* name);
// Sets the attribute word; 0 or the Windows error code.
uint32_t osSetFileAttributes(VMEngine* vm, const char* name, uint32_t attributes);

// A search over a wildcard mask that finds every kind of entry; null when
// nothing matches. The record receives the first entry, then each next one.
void* osFindFirst(VMEngine* vm, const char* mask, OsFindRecord* record);
bool osFindNext(VMEngine* vm, void* search, OsFindRecord* record);
void osFindClose(VMEngine* vm, void* search);

// The last-write time of a record in local time: "YYYYMMDD" and "HH:MM:SS".
bool osFormatWriteDate(const OsFindRecord& record, char out[9]);
bool osFormatWriteTime(const OsFindRecord& record, char out[9]);

// A local calendar time; a part below 0 is taken from the clock.
struct OsLocalTime {
  int year, month, day, hour, minute, second;
};
// Opens the file for reading and writing and sets its last-access and
// last-write times (the creation time stays); false when it cannot be opened
// or the times cannot be set.
bool osSetFileTimes(VMEngine* vm, const char* name, const OsLocalTime& when, bool haveDate,
                    bool haveTime);

// Drive types as the program sees them.
inline constexpr int DRIVETYPE_RAM = 0;
inline constexpr int DRIVETYPE_REMOVABLE = 2;
inline constexpr int DRIVETYPE_FIXED = 3;
inline constexpr int DRIVETYPE_CDROM = 4;
inline constexpr int DRIVETYPE_REMOTE = 5;
inline constexpr int DRIVETYPE_OTHER = 9;
// The type of the drive of a root such as "C:\".
int osDriveType(VMEngine* vm, const char* root);

// The executable's full name in the Windows form; false when unknown.
bool osExecutableName(char* buffer, uint32_t size);
// The system's temporary directory in the Windows form with a trailing
// backslash; its length, 0 on failure.
uint32_t osTempPath(char* buffer, uint32_t size);
// The directory of temporary files for new names: the environment's TEMP, in
// the Windows form; false when there is none.
bool osTempDirectory(char* buffer, uint32_t size);
