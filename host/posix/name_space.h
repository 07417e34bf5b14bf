// The Windows name space on a POSIX system: drive letters mapped to
// directories (C to "/" unless KOVO_DRIVES says otherwise, "D=/srv/data;E=/mnt/cd"),
// one current directory per drive, either separator, and names that match
// whatever letter case they were created with.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

inline constexpr int DRIVE_COUNT = 26;
inline constexpr int DRIVE_C = 2;

struct DriveTable {
  std::string
      roots[DRIVE_COUNT];  // absolute, without a trailing "/" (except "/"); empty: not mapped
};

// The table that a KOVO_DRIVES text describes; null or empty gives C alone.
DriveTable parseDrives(const char* text);
// The table of the process's environment now.
DriveTable currentDrives();

// Where a program's name leads before letter case is looked at.
struct LexicalName {
  std::string path;  // absolute, or relative to the current directory
  size_t fixed;      // leading characters that are a drive's root, taken as they stand
  int drive;         // the drive letter's number when the name gave one, else -1
};

// What the lexical step needs of the process: the current drive and the
// current directory of every drive.
struct DriveState {
  DriveTable table;
  int current;
  std::string directories[DRIVE_COUNT];  // absolute, under each mapped drive's root
};

// Drive letter, separators, ".", ".." (never above a drive's root) and the
// trailing dots and blanks that Windows drops from a component. False when
// the name's drive is not mapped.
bool lexicalName(std::string_view name, const DriveState& state, LexicalName* out);

enum class NameStatus {
  Exists,       // the name (after matching letter case) exists
  Missing,      // its directory exists, the last component does not
  PathMissing,  // a directory on the way is missing
  NoDrive,      // the drive is not mapped
};

struct ResolvedName {
  std::string path;
  NameStatus status;
  int drive;
};

// The operating system's name for a program's name. A component that does not
// exist as written takes the one name of its directory that matches it apart
// from letter case; none or several leave it as written. A name that exists
// as written costs no directory listing.
ResolvedName resolveName(const char* name);
// Letter case of `path`'s components after the first `fixed` characters.
NameStatus matchLetterCase(std::string* path, size_t fixed);

// Whether `root` holds `path` (both absolute).
bool rootHolds(const std::string& root, std::string_view path);
// The drive whose root holds `path`, the longest root winning; -1 when none.
int driveHolding(const DriveTable& table, std::string_view path);
// "C:\DIR\FILE" for an absolute name; false when no drive holds it.
bool windowsForm(const DriveTable& table, std::string_view path, std::string* out);
// `path` below the root of `drive` with backslashes and no leading one.
std::string directoryBelowRoot(const DriveTable& table, int drive, std::string_view path);

// The process's current drive, and the current directory of a drive.
int currentDrive();
std::string driveDirectory(int drive);
// 0 or a Windows error code.
uint32_t changeDrive(int drive);
uint32_t changeDirectory(const char* name);

// The process's current directory; empty when it cannot be had.
std::string workingDirectory();
