// Attributes, sizes, time stamps and the wildcard search, straight from the
// operating system: the file layer's error cell is never touched here.
#include <cstdio>
#include <cstring>
#include <initializer_list>

#include "frame/frame.h"
#include "frame/state.h"
#include "os/file_system.h"

namespace {

// The search of FILESEEK and the record it found last, which FILESIZE,
// FILEDATE and HB_FUN_FILETIME read when called without a name, also after
// the search has ended.
struct FileSeekState {
  void* search;
  OsFindRecord record;
};

void endSearch(VMEngine* vm);
const StateSlot<FileSeekState> seekState(&endSearch);

void endSearch(VMEngine* vm) {
  FileSeekState& state = seekState(vm);
  if (state.search) osFindClose(vm, state.search);
  state.search = nullptr;
}

// The record of parameter 1's file (found afresh), or of the last FILESEEK
// when no name is passed; false when there is none.
bool findRecord(VMEngine* vm, OsFindRecord* record) {
  if (!paramIsString(vm, 1)) {
    *record = seekState(vm).record;
    return record->name[0] != '\0';
  }
  void* search = osFindFirst(vm, paramPChar(vm, 1), record);
  if (!search) return false;
  osFindClose(vm, search);
  return true;
}

constexpr uint32_t SETFATTR_BITS = FA_READONLY | FA_HIDDEN | FA_SYSTEM;
constexpr int32_t FILESIZE_DEFAULT_MASK = 63;
const char EMPTY_DATE[] = "        ";

// Sizes of 4 GiB and more keep the arithmetic programs were written against:
// the low word minus the high word.
int64_t recordSize(const OsFindRecord& record) {
  if (record.sizeHigh == 0) return record.sizeLow;
  return static_cast<int64_t>(record.sizeLow) - record.sizeHigh;
}

}  // namespace

KOVO_FUNC(FILEATTR) {
  uint32_t attributes = osFileAttributes(vm, paramXPChar(vm, 1));
  itemPutNL(vm, returnItem(vm), static_cast<int32_t>(attributes));
}

// The archive bit is always given; only the operating system's codes 2, 3
// and 5 have a result, any other failure leaves it unset.
KOVO_FUNC(SETFATTR) {
  uint32_t attributes = FA_ARCHIVE | (static_cast<uint32_t>(paramGetNI(vm, 2)) & SETFATTR_BITS);
  uint32_t code = osSetFileAttributes(vm, paramXPChar(vm, 1), attributes);
  if (code == 0 || code == FS_FILE_NOT_FOUND || code == FS_PATH_NOT_FOUND ||
      code == FS_ACCESS_DENIED)
    itemPutNL(vm, returnItem(vm), -static_cast<int32_t>(code));
}

KOVO_FUNC(FILESEEK) {
  FileSeekState& state = seekState(vm);
  if (paramIsString(vm, 1)) {
    endSearch(vm);
    state.search = osFindFirst(vm, paramPChar(vm, 1), &state.record);
    itemPutC(vm, returnItem(vm), state.search ? state.record.name : "");
    return;
  }
  if (state.search && osFindNext(vm, state.search, &state.record)) {
    itemPutC(vm, returnItem(vm), state.record.name);
    return;
  }
  endSearch(vm);
  returnEmptyText(vm);
}

KOVO_FUNC(FILESIZE) {
  OsFindRecord record;
  bool found = findRecord(vm, &record);
  if (found && paramIsString(vm, 1)) {
    int32_t asked = paramIsNumCompat(vm, 2) ? paramGetNI(vm, 2) : FILESIZE_DEFAULT_MASK;
    uint32_t mask = FA_ARCHIVE | (static_cast<uint32_t>(asked) & SETFATTR_BITS);
    found = (record.attributes & mask) != 0;
  }
  itemPutNInt(vm, returnItem(vm), found ? recordSize(record) : -1);
}

KOVO_FUNC(FILEDATE) {
  OsFindRecord record;
  char text[9];
  bool known = findRecord(vm, &record) && osFormatWriteDate(record, text);
  itemPutDS(vm, returnItem(vm), known ? text : EMPTY_DATE);
}

KOVO_FUNC(HB_FUN_FILETIME) {
  OsFindRecord record;
  char text[9];
  bool known = findRecord(vm, &record) && osFormatWriteTime(record, text);
  itemPutC(vm, returnItem(vm), known ? text : "");
}

// The date and the time may come in either order.
KOVO_FUNC(SETFDATI) {
  if (!paramIsString(vm, 1)) {
    itemPutL(vm, returnItem(vm), false);
    return;
  }
  int dateParam = 0;
  int timeParam = 0;
  for (int n : {3, 2}) {
    const Item* item = paramResolved(vm, n);
    if (item && item->type == HB_IT_DATE) dateParam = n;
    if (item && itemIsString(item)) timeParam = n;
  }
  OsLocalTime when = {};
  bool haveDate = dateParam && std::sscanf(paramGetDS(vm, dateParam), "%4d%2d%2d", &when.year,
                                           &when.month, &when.day) == 3;
  bool haveTime = timeParam != 0;
  if (haveTime)
    std::sscanf(paramPChar(vm, timeParam), "%2d:%2d:%2d", &when.hour, &when.minute, &when.second);
  itemPutL(vm, returnItem(vm), osSetFileTimes(vm, paramPChar(vm, 1), when, haveDate, haveTime));
}
