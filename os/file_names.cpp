// File functions on names through the host's file layer: deleting, renaming,
// directories, wildcard deletion, and the constants of the name syntax.
#include <cctype>
#include <cstring>
#include <string>

#include "frame/frame.h"

namespace {

// 0 when the operation succeeded, else the operating system's code negated.
void returnOsOutcome(VMEngine* vm, bool succeeded) {
  itemPutNL(vm, returnItem(vm), succeeded ? 0 : -static_cast<int32_t>(fsOsError(vm)));
}

int driveOf(const char* text) {
  return std::toupper(static_cast<unsigned char>(text[0])) - 'A';
}

}  // namespace

// The cell starts at 3, so that a call without a name reports "path not found".
KOVO_FUNC(FERASE) {
  fsSetError(vm, FS_PATH_NOT_FOUND);
  bool deleted = paramIsString(vm, 1) && fsDelete(vm, paramPChar(vm, 1));
  itemPutNI(vm, returnItem(vm), deleted ? 0 : -1);
}

// The cell starts at 2, so that a call without names reports "file not found".
KOVO_FUNC(FRENAME) {
  fsSetError(vm, FS_FILE_NOT_FOUND);
  bool renamed = paramIsString(vm, 1) && paramIsString(vm, 2) &&
                 fsRename(vm, paramPChar(vm, 1), paramPChar(vm, 2));
  itemPutNI(vm, returnItem(vm), renamed ? 0 : -1);
}

KOVO_FUNC(DELETEFILE) {
  returnOsOutcome(vm, fsDelete(vm, paramXPChar(vm, 1)));
}

KOVO_FUNC(DIRMAKE) {
  returnOsOutcome(vm, fsMkDir(vm, paramXPChar(vm, 1)));
}

KOVO_FUNC(FILEMOVE) {
  returnOsOutcome(vm, fsRename(vm, paramXPChar(vm, 1), paramXPChar(vm, 2)));
}

// Deletes what the mask finds, from inside the mask's directory, and comes
// back to the drive and directory it started from.
KOVO_FUNC(FILEDELETE) {
  bool deleted = false;
  if (paramIsString(vm, 1)) {
    // Read before the name's copy is made: an array here throws the
    // readers' exception, which must leave no copy behind.
    auto attributes = static_cast<uint32_t>(paramGetNI(vm, 2));
    bool mustFree = false;
    const char* mask = fsFileNameConv(vm, paramPChar(vm, 1), &mustFree);
    FileFindInfo* found = fsFindFirst(vm, mask, attributes);
    if (found) {
      int startDrive = fsCurDrv(vm);
      std::string startDirectory = std::string("\\") + fsCurDir(vm, 0);
      HB_FNAME* parts = fsFNameSplit(vm, mask);
      fsChDrv(vm, driveOf(parts->szDrive));
      if (parts->szPath[0]) fsChDir(vm, parts->szPath);
      do {
        if (fsDelete(vm, found->name)) deleted = true;
      } while (fsFindNext(vm, found));
      fsFindClose(vm, found);
      vmFree(vm, parts);
      fsChDrv(vm, startDrive);
      fsChDir(vm, startDirectory.c_str());
    }
    if (mustFree) vmFree(vm, const_cast<char*>(mask));
  }
  itemPutL(vm, returnItem(vm), deleted);
}

KOVO_FUNC(HB_OSPATHSEPARATOR) {
  itemPutCL(vm, returnItem(vm), "\\", 1);
}

KOVO_FUNC(HB_OSPATHLISTSEPARATOR) {
  itemPutCL(vm, returnItem(vm), ";", 1);
}

KOVO_FUNC(HB_OSDRIVESEPARATOR) {
  itemPutCL(vm, returnItem(vm), ":", 1);
}

KOVO_FUNC(HB_OSPATHDELIMITERS) {
  itemPutCL(vm, returnItem(vm), "\\/:", 3);
}
