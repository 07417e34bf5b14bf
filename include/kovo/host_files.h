// The file layer: handles, names in the Windows form, the per-context error
// cell. Every name a program gives may use "\" or "/", a drive letter and any
// letter case; names handed back are in the Windows form ("C:\DIR\FILE").
#pragma once

#include <cstdint>

#include "kovo/export.h"
#include "kovo/vmengine.h"

// A file layer handle: a small number, FS_ERROR for none.
using FHANDLE = int32_t;
inline constexpr FHANDLE FS_ERROR = -1;

// Open modes: access in the low bits, sharing above them, the private flag.
inline constexpr uint16_t FO_READ = 0x00;
inline constexpr uint16_t FO_WRITE = 0x01;
inline constexpr uint16_t FO_READWRITE = 0x02;
inline constexpr uint16_t FO_COMPAT = 0x00;
inline constexpr uint16_t FO_EXCLUSIVE = 0x10;
inline constexpr uint16_t FO_DENYWRITE = 0x20;
inline constexpr uint16_t FO_DENYREAD = 0x30;
inline constexpr uint16_t FO_DENYNONE = 0x40;
inline constexpr uint16_t FO_PRIVATE = 0x80;

// Seek origins.
inline constexpr uint16_t FS_SET = 0;
inline constexpr uint16_t FS_RELATIVE = 1;
inline constexpr uint16_t FS_END = 2;

// Codes of the error cell (DOS/Windows codes).
inline constexpr uint16_t FS_OK = 0;
inline constexpr uint16_t FS_FILE_NOT_FOUND = 2;
inline constexpr uint16_t FS_PATH_NOT_FOUND = 3;
inline constexpr uint16_t FS_TOO_MANY_OPEN = 4;
inline constexpr uint16_t FS_ACCESS_DENIED = 5;
inline constexpr uint16_t FS_INVALID_HANDLE = 6;
inline constexpr uint16_t FS_NOT_SAME_DEVICE = 17;
inline constexpr uint16_t FS_SHARING_VIOLATION = 32;
inline constexpr uint16_t FS_FILE_EXISTS = 80;
inline constexpr uint16_t FS_DISK_FULL = 112;
inline constexpr uint16_t FS_NAME_TOO_LONG = 206;

// A name split into its parts; every part is NUL-terminated, empty when absent.
// szPath keeps its trailing separator, szExtension its leading dot.
struct HB_FNAME {
  char szPath[260];
  char szName[260];
  char szExtension[260];
  char szDrive[3];
};

KOVO_HOST_API FHANDLE fsOpen(VMEngine* vm, const char* name, uint16_t mode);
// Creates or truncates; `attribute` holds the Windows attribute bits to give.
KOVO_HOST_API FHANDLE fsCreate(VMEngine* vm, const char* name, uint32_t attribute);
KOVO_HOST_API void fsClose(VMEngine* vm, FHANDLE handle);
KOVO_HOST_API uint16_t fsRead(VMEngine* vm, FHANDLE handle, void* buffer, uint16_t count);
KOVO_HOST_API uint32_t fsReadLarge(VMEngine* vm, FHANDLE handle, void* buffer, uint32_t count);
KOVO_HOST_API uint16_t fsWrite(VMEngine* vm, FHANDLE handle, const void* buffer, uint16_t count);
KOVO_HOST_API uint32_t fsWriteLarge(VMEngine* vm, FHANDLE handle, const void* buffer,
                                    uint32_t count);
KOVO_HOST_API uint32_t fsSeek(VMEngine* vm, FHANDLE handle, int32_t offset, uint16_t origin);
KOVO_HOST_API int64_t fsSeekLarge(VMEngine* vm, FHANDLE handle, int64_t offset, uint16_t origin);
KOVO_HOST_API void fsCommit(VMEngine* vm, FHANDLE handle);
KOVO_HOST_API bool fsDelete(VMEngine* vm, const char* name);
KOVO_HOST_API bool fsRename(VMEngine* vm, const char* oldName, const char* newName);
KOVO_HOST_API bool fsFile(VMEngine* vm, const char* name);
KOVO_HOST_API bool fsMkDir(VMEngine* vm, const char* name);
KOVO_HOST_API bool fsChDir(VMEngine* vm, const char* name);
// Drives count from 0 for A; the result is 0 on success, else an error code.
KOVO_HOST_API uint16_t fsChDrv(VMEngine* vm, int drive);
KOVO_HOST_API int fsCurDrv(VMEngine* vm);
// The current directory of a drive (0 the current drive, 1 A, ...), without
// drive and leading backslash; the text lives until the next call.
KOVO_HOST_API const char* fsCurDir(VMEngine* vm, int drive);
// As fsCurDir into a buffer; 0 on success, else an error code.
KOVO_HOST_API uint16_t fsCurDirBuff(VMEngine* vm, int drive, char* buffer, uint32_t size);
KOVO_HOST_API uint16_t fsCurDirBuffEx(VMEngine* vm, int drive, char* buffer, uint32_t size);

// Windows attribute bits.
inline constexpr uint32_t FA_READONLY = 0x01;
inline constexpr uint32_t FA_HIDDEN = 0x02;
inline constexpr uint32_t FA_SYSTEM = 0x04;
inline constexpr uint32_t FA_DIRECTORY = 0x10;
inline constexpr uint32_t FA_ARCHIVE = 0x20;
// What the attribute query gives for a name that does not exist.
inline constexpr uint32_t FA_INVALID = 0xFFFFFFFF;

// One directory entry found by a search.
struct FileFindInfo {
  char name[260];
  int64_t size;
  uint32_t attributes;  // Windows attribute bits
  int64_t writeTime;    // seconds since 1970, UTC
  void* handle;         // the search; owned by the file layer
};
// The first entry matching a wildcard mask and the DOS attribute rule (plain
// files always; hidden, system and directory entries only when their bit is
// asked for), in case-insensitive name order; null when none, with the error
// cell at 2 (or 3 for a missing directory). Release with fsFindClose; a
// search still open when its context ends is released then.
KOVO_HOST_API FileFindInfo* fsFindFirst(VMEngine* vm, const char* mask, uint32_t attributes);
// The same search for callers beside the layer: it leaves the error cell and
// the last operating-system code alone.
KOVO_HOST_API FileFindInfo* fsFindFirstQuiet(VMEngine* vm, const char* mask, uint32_t attributes);
KOVO_HOST_API bool fsFindNext(VMEngine* vm, FileFindInfo* find);
KOVO_HOST_API void fsFindClose(VMEngine* vm, FileFindInfo* find);
// Whether a name matches a Windows wildcard mask ("*", "?"; "*.*" matches
// every name, "NAME.*" also "NAME"), letter case aside.
KOVO_HOST_API bool fsMatchWild(const char* name, const char* mask);

// Splits a name; the result is a block of the context's heap (vmAlloc) that
// the caller frees with vmFree.
KOVO_HOST_API HB_FNAME* fsFNameSplit(VMEngine* vm, const char* name);
// Joins the parts into `buffer` (260 bytes) and returns it.
KOVO_HOST_API char* fsFNameMerge(VMEngine* vm, char* buffer, const HB_FNAME* parts);
// The name as the operating system takes it (the result may be `name` itself,
// or a heap copy that *mustFree says to free).
KOVO_HOST_API const char* fsFileNameConv(VMEngine* vm, const char* name, bool* mustFree);
KOVO_HOST_API void fsAddSearchPath(VMEngine* vm, const char* path);
KOVO_HOST_API void hb_setFreeSetPath(VMEngine* vm);

// ---- The name space, for the operating-system calls beside the layer ------------
// None of these touch the error cell.
//
// The operating system's name of a program's name (drive letter, either
// separator, any letter case), as a heap block (vmAlloc) for the caller to
// free; null when a drive is not mapped or a directory on the way is missing,
// *error then holding the Windows code (3). A last component that does not
// exist keeps the letter case written.
KOVO_HOST_API char* fsNameToNative(VMEngine* vm, const char* name, uint32_t* error);
// The Windows form ("C:\DIR\FILE") of an absolute operating-system name,
// into `buffer`; false when it does not fit or no drive holds it.
KOVO_HOST_API bool fsNameFromNative(const char* native, char* buffer, uint32_t size);
// The Windows attribute bits of an operating-system name, FA_INVALID when it
// does not exist; and their change (read-only, hidden, system), 0 or the
// Windows error code.
KOVO_HOST_API uint32_t fsNativeAttributes(const char* native);
KOVO_HOST_API uint32_t fsNativeSetAttributes(const char* native, uint32_t attributes);

KOVO_HOST_API uint16_t fsError(VMEngine* vm);
// The operating system's last code, in Win32 terms.
KOVO_HOST_API uint32_t fsOsError(VMEngine* vm);
KOVO_HOST_API void fsSetError(VMEngine* vm, uint16_t code);

// Closes an output file of the SET table: a text handle's close writes nothing extra.
KOVO_HOST_API void close_text(VMEngine* vm, FHANDLE handle);
KOVO_HOST_API void close_binary(VMEngine* vm, FHANDLE handle);
