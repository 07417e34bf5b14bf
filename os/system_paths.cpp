// Drives, the program's directory, the temporary directory and new
// temporary names, straight from the operating system.
#include <strings.h>
#include <cstdio>
#include <cstring>
#include <initializer_list>

#include "frame/frame.h"
#include "frame/state.h"
#include "os/file_system.h"
#include "os/guid.h"

namespace {

constexpr uint32_t PATH_BUFFER = 260;
constexpr uint32_t TEMP_NAME_BUFFER = 512;
constexpr uint32_t TEMP_VARIABLE_LIMIT = 255;
constexpr int32_t DRIVE_COUNT = 26;

// The names TEMPFILE handed out, kept for the life of the context.
struct TempName {
  TempName* next;
  char* name;
};
struct TempFileList {
  TempName* head;
  TempName* tail;
};

void releaseTempNames(VMEngine* vm);
const StateSlot<TempFileList> tempFiles(&releaseTempNames);

void releaseTempNames(VMEngine* vm) {
  TempFileList& list = tempFiles(vm);
  for (TempName* entry = list.head; entry;) {
    TempName* next = entry->next;
    vmFree(vm, entry->name);
    vmFree(vm, entry);
    entry = next;
  }
  list = {};
}

void registerTempName(VMEngine* vm, const char* name, size_t length) {
  auto* entry = static_cast<TempName*>(vmAlloc(vm, sizeof(TempName)));
  entry->name = static_cast<char*>(vmAlloc(vm, length + 1));
  std::memcpy(entry->name, name, length);
  TempFileList& list = tempFiles(vm);
  if (list.tail) {
    list.tail->next = entry;
  } else {
    list.head = entry;
  }
  list.tail = entry;
}

}  // namespace

// "C", "C:" and "C:\" all ask for the root of drive C.
KOVO_FUNC(DRIVETYPE) {
  const char* given = paramXPChar(vm, 1);
  size_t length = std::strlen(given);
  auto* root = static_cast<char*>(vmAlloc(vm, length + 3));
  std::memcpy(root, given, length);
  if (!std::strchr(root, ':')) root[length++] = ':';
  if (!std::strchr(root, '\\')) root[length++] = '\\';
  int type = osDriveType(vm, root);
  vmFree(vm, root);
  itemPutNI(vm, returnItem(vm), type);
}

KOVO_FUNC(APPPATH) {
  char path[PATH_BUFFER];
  if (!osExecutableName(path, PATH_BUFFER)) {
    returnEmptyText(vm);
    return;
  }
  char* slash = std::strrchr(path, '\\');
  if (slash) slash[1] = '\0';
  itemPutC(vm, returnItem(vm), path);
}

KOVO_FUNC(GETSYSTEMPPATH) {
  char path[PATH_BUFFER];
  uint32_t length = osTempPath(path, PATH_BUFFER);
  itemPutCL(vm, returnItem(vm), path, length);
}

KOVO_FUNC(NUMDISKL) {
  itemPutNI(vm, returnItem(vm), DRIVE_COUNT);
}

// A name "tmp_" + 32 hexadecimal digits + "." + the extension in the given
// directory or TEMP; a table's index and memo companions are registered
// with it. The file itself is not made.
KOVO_FUNC(TEMPFILE) {
  auto* name = static_cast<char*>(vmAlloc(vm, TEMP_NAME_BUFFER));
  Guid guid;
  osNewGuid(&guid);
  char unique[80];
  std::snprintf(unique, sizeof unique, "%08X%08X%08X%08X", littleEndian(guid.bytes, 4),
                littleEndian(guid.bytes + 4, 4), littleEndian(guid.bytes + 8, 4),
                littleEndian(guid.bytes + 12, 4));
  if (paramIsString(vm, 1)) {
    std::snprintf(name, TEMP_VARIABLE_LIMIT + 1, "%s", paramPChar(vm, 1));
  } else {
    osTempDirectory(name, TEMP_VARIABLE_LIMIT + 1);
  }
  size_t length = std::strlen(name);
  if (length == 0 || name[length - 1] != '\\') name[length++] = '\\';
  const char* extension = paramIsString(vm, 2) ? paramPChar(vm, 2) : "";
  std::snprintf(name + length, TEMP_NAME_BUFFER - length, "tmp_%s.%s", unique, extension);
  length = std::strlen(name);
  registerTempName(vm, name, length);
  if (strcasecmp(extension, "dbf") == 0) {
    size_t stem = length - std::strlen(extension);
    auto* companion = static_cast<char*>(vmAlloc(vm, stem + 4));
    std::memcpy(companion, name, stem);
    for (const char* other : {"cdx", "fpt"}) {
      std::memcpy(companion + stem, other, 4);
      registerTempName(vm, companion, stem + 3);
    }
    vmFree(vm, companion);
  }
  itemPutCPtr(vm, returnItem(vm), name, static_cast<uint32_t>(length));
}
