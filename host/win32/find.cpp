// The directory listing of a search on Windows: FindFirstFileA and
// FindNextFileA over the mask.
#include <windows.h>

#include <cstring>

#include "../file_listing.h"

namespace {

int64_t unixSeconds(const FILETIME& time) {
  constexpr int64_t TICKS_PER_SECOND = 10000000;
  constexpr int64_t EPOCH_DIFFERENCE = 11644473600;  // 1601 to 1970
  int64_t ticks = (static_cast<int64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
  return ticks / TICKS_PER_SECOND - EPOCH_DIFFERENCE;
}

}  // namespace

uint32_t listEntries(const char* mask, uint32_t asked, std::vector<FileFindInfo>* entries) {
  WIN32_FIND_DATAA data;
  HANDLE search = FindFirstFileA(mask, &data);
  if (search == INVALID_HANDLE_VALUE) {
    DWORD code = GetLastError();
    return code == ERROR_FILE_NOT_FOUND || code == ERROR_NO_MORE_FILES ? 0 : code;
  }
  do {
    if (!wantedEntry(data.dwFileAttributes, asked)) continue;
    FileFindInfo found = {};
    std::memcpy(found.name, data.cFileName, sizeof found.name);
    found.size = (static_cast<int64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
    found.attributes = data.dwFileAttributes;
    found.writeTime = unixSeconds(data.ftLastWriteTime);
    entries->push_back(found);
  } while (FindNextFileA(search, &data));
  FindClose(search);
  return 0;
}
