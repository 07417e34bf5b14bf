// SAVE TO and RESTORE FROM: memory variables written to and read from ".mem"
// files through the host's file layer.
#include <cstdio>

#include "frame/frame.h"
#include "rtl/memvar_file.h"

namespace {

constexpr int32_t SAVE_ARGUMENT_ERROR = 2008;
constexpr int32_t RESTORE_ARGUMENT_ERROR = 2007;
constexpr int32_t SAVE_CREATE_ERROR = 2006;
constexpr int32_t RESTORE_OPEN_ERROR = 2005;
// Read only, others may read but not write, not inherited.
constexpr uint16_t RESTORE_OPEN_MODE = FO_READ | FO_DENYWRITE | FO_PRIVATE;
constexpr uint8_t END_OF_FILE = 0x1A;

// The file's name: ".mem" when it has no extension and, when a default
// directory is given, that directory when it has none.
void memFileName(VMEngine* vm, const char* given, const char* defaultDirectory,
                 char (&merged)[260]) {
  HB_FNAME* parts = fsFNameSplit(vm, given);
  if (!parts->szExtension[0]) std::snprintf(parts->szExtension, sizeof parts->szExtension, ".mem");
  if (!parts->szPath[0] && defaultDirectory) {
    std::snprintf(parts->szPath, sizeof parts->szPath, "%s", defaultDirectory);
  }
  fsFNameMerge(vm, merged, parts);
  vmFree(vm, parts);
}

// Opens the file until it succeeds or the handler of the error answers
// anything but retry; the error lists the first `listed` parameters.
FHANDLE openRetrying(VMEngine* vm, const char* name, FHANDLE (*open)(VMEngine*, const char*),
                     int32_t genCode, int32_t subCode, uint32_t listed) {
  FHANDLE handle = open(vm, name);
  while (handle == FS_ERROR) {
    uint16_t action = err_RT_BASE_Ext1(vm, genCode, subCode, nullptr, name, fsError(vm),
                                       EF_CANRETRY | EF_CANDEFAULT, listed, paramError(vm, 1),
                                       paramError(vm, 2), paramError(vm, 3));
    if (action == E_DEFAULT || action == E_BREAK) return FS_ERROR;
    handle = open(vm, name);
  }
  return handle;
}

// Closes the file however the function is left.
class OpenFile {
 public:
  OpenFile(VMEngine* vm, FHANDLE handle) : vm_(vm), handle_(handle) {}
  ~OpenFile() { fsClose(vm_, handle_); }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  // A source of bytes for the reader.
  static uint32_t read(void* cargo, void* buffer, uint32_t count) {
    auto* file = static_cast<OpenFile*>(cargo);
    return fsRead(file->vm_, file->handle_, buffer, static_cast<uint16_t>(count));
  }

 private:
  VMEngine* vm_;
  FHANDLE handle_;
};

}  // namespace

KOVO_FUNC(__MVSAVE) {
  if (paramCount(vm) != 3 || !paramIsString(vm, 1) || !paramIsString(vm, 2) ||
      !paramIsLogical(vm, 3)) {
    argErrorNoSubst(vm, SAVE_ARGUMENT_ERROR, "__MSAVE", 3);
    return;
  }
  // Saving, unlike restoring, does not look at the default directory.
  char name[260];
  memFileName(vm, itemGetC(vm, paramResolved(vm, 1)), nullptr, name);
  FHANDLE handle = openRetrying(
      vm, name, [](VMEngine* vm, const char* name) { return fsCreate(vm, name, 0); }, EG_CREATE,
      SAVE_CREATE_ERROR, 3);
  if (handle == FS_ERROR) return;
  OpenFile file(vm, handle);
  const char* mask = itemGetC(vm, paramResolved(vm, 2));
  MemvarMask filter(vm, mask);
  uint8_t header[MEMVAR_HEADER_SIZE];
  MemvarSaveContext context{mask, paramIsTrue(vm, 3), filter.expression(), header, handle};
  xdynsymEval(vm, memvarSave, &context);
  fsWrite(vm, handle, &END_OF_FILE, 1);
}

KOVO_FUNC(__MVRESTORE) {
  if (!paramIsString(vm, 1) || !paramIsLogical(vm, 2)) {
    argErrorNoSubst(vm, RESTORE_ARGUMENT_ERROR, "__MRESTORE", 2);
    return;
  }
  if (!paramIsTrue(vm, 2)) memvarClearAll(vm);
  char name[260];
  const char* defaultDirectory = vm->set.text[HB_SET_DEFAULT];
  memFileName(vm, itemGetC(vm, paramResolved(vm, 1)), defaultDirectory ? defaultDirectory : "",
              name);
  FHANDLE handle = openRetrying(
      vm, name, [](VMEngine* vm, const char* name) { return fsOpen(vm, name, RESTORE_OPEN_MODE); },
      EG_OPEN, RESTORE_OPEN_ERROR, 2);
  if (handle == FS_ERROR) {
    itemPutL(vm, returnItem(vm), false);
    return;
  }
  OpenFile file(vm, handle);
  Item* maskParam = paramResolved(vm, 3);
  // A logical fourth parameter is deliberately not looked at: only a string
  // can turn the filter round, read as the logical parameter helper reads it.
  bool include = paramIsString(vm, 4) ? param(vm, 4) != 0 : true;
  MemvarMask filter(vm, itemIsString(maskParam) ? maskParam->item.asString.value : "*");
  memvarRestoreRecords(vm, {OpenFile::read, &file}, filter, include);
}

KOVO_ALIAS(__MSAVE, __MVSAVE);
KOVO_ALIAS(__MRESTORE, __MVRESTORE);
