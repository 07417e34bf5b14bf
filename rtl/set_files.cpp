// The settings that name files: the search path, the alternate, extra and
// printer files with the printer switch, and the trace file.
#include <cstdio>
#include <cstring>

#include "rtl/set_table.h"

namespace {

constexpr uint8_t TEXT_EOF = 0x1A;
// The printer-file name that stands for the printer itself, in a block of this size.
constexpr const char* PRINTER_NAME = "PRN";
constexpr size_t PRINTER_NAME_BLOCK = 12;
constexpr size_t NAME_LIMIT = 255;

// Create errors of the output files; other settings give up without one.
constexpr int32_t ALTFILE_CREATE_ERROR = 2013;
constexpr int32_t PRINTFILE_CREATE_ERROR = 2014;
constexpr int32_t EXTRAFILE_CREATE_ERROR = 2015;

int32_t createErrorOf(int32_t setting) {
  switch (setting) {
    case HB_SET_ALTFILE:
      return ALTFILE_CREATE_ERROR;
    case HB_SET_PRINTFILE:
      return PRINTFILE_CREATE_ERROR;
    case HB_SET_EXTRAFILE:
      return EXTRAFILE_CREATE_ERROR;
    default:
      return 0;
  }
}

bool isEmpty(const char* text) {
  return !text || !*text;
}

// The name with the default directory of setting 7 where it has none and the
// default extension where it has none.
void mergeOutputName(VMEngine* vm, const char* name, const char* extension, char* path) {
  HB_FNAME* parts = fsFNameSplit(vm, name);
  const char* directory = setText(vm->set.text[HB_SET_DEFAULT]);
  if (!parts->szPath[0] && *directory) {
    size_t length = std::strlen(directory);
    if (length > sizeof parts->szPath - 2) length = sizeof parts->szPath - 2;
    std::memcpy(parts->szPath, directory, length);
    char last = directory[length - 1];
    if (last != '\\' && last != '/' && last != ':') parts->szPath[length++] = '\\';
    parts->szPath[length] = '\0';
  }
  if (!parts->szExtension[0])
    std::snprintf(parts->szExtension, sizeof parts->szExtension, "%s", extension);
  fsFNameMerge(vm, path, parts);
  vmFree(vm, parts);
}

// Opens for appending: a text file's trailing end-of-file mark is overwritten
// by the next write, a printer file is written on at its end.
FHANDLE openForAppend(VMEngine* vm, const char* path, int32_t setting) {
  if (!fsFile(vm, path)) return fsCreate(vm, path, 0);
  FHANDLE handle = fsOpen(vm, path, FO_READWRITE);
  if (handle == FS_ERROR) return handle;
  if (setting == HB_SET_PRINTFILE) {
    fsSeek(vm, handle, 0, FS_END);
    return handle;
  }
  uint8_t last = 0;
  fsSeek(vm, handle, -1, FS_END);
  if (fsRead(vm, handle, &last, 1) == 1 && last == TEXT_EOF) fsSeek(vm, handle, -1, FS_END);
  return handle;
}

// Opens an output file; a failure of 19, 22 or 24 is a create error that the
// handler may answer with a retry. The file layer's error code is left as it was.
FHANDLE openOutput(VMEngine* vm, const char* extension, const char* name, bool append,
                   int32_t setting) {
  uint16_t savedError = fsError(vm);
  char path[260];
  mergeOutputName(vm, name, extension, path);
  std::snprintf(vm->set.lastOutputName, sizeof vm->set.lastOutputName, "%.*s",
                static_cast<int>(NAME_LIMIT), name);
  int32_t createError = createErrorOf(setting);
  FHANDLE handle;
  for (;;) {
    handle = append ? openForAppend(vm, path, setting) : fsCreate(vm, path, 0);
    if (handle != FS_ERROR || !createError) break;
    uint16_t action = err_RT_TERM(vm, EG_CREATE, createError, nullptr, path, fsError(vm),
                                  EF_CANRETRY | EF_CANDEFAULT);
    if (action == E_DEFAULT || action == E_BREAK) break;
  }
  fsSetError(vm, savedError);
  return handle;
}

void closeText(VMEngine* vm, int32_t& handle) {
  if (handle != FS_ERROR) close_text(vm, handle);
  handle = FS_ERROR;
}

void closeBinary(VMEngine* vm, int32_t& handle) {
  if (handle != FS_ERROR) close_binary(vm, handle);
  handle = FS_ERROR;
}

// 19 and 22: NIL closes the file and forgets the name; a new name opens it.
void setTextOutput(VMEngine* vm, const SetCall& call, int32_t& handle, const char* extension) {
  char*& name = vm->set.text[call.number];
  itemPutC(vm, returnItem(vm), setText(name));
  if (!call.changes()) return;
  if (call.value->type == HB_IT_NIL) {
    vmFree(vm, name);
    name = nullptr;
  } else {
    setStringRule(vm, name, call.value);
  }
  bool append = call.count > 2 && setLogicalRule(call.option, false);
  closeText(vm, handle);
  if (!isEmpty(name)) handle = openOutput(vm, extension, name, append, call.number);
}

}  // namespace

void setPath(VMEngine* vm, const SetCall& call) {
  char*& path = vm->set.text[HB_SET_PATH];
  itemPutC(vm, returnItem(vm), setText(path));
  if (!call.changes()) return;
  hb_setFreeSetPath(vm);
  setStringRule(vm, path, call.value);
  fsAddSearchPath(vm, setText(path));
}

void setAltFile(VMEngine* vm, const SetCall& call) {
  setTextOutput(vm, call, vm->set.altHandle, ".txt");
}

void setExtraFile(VMEngine* vm, const SetCall& call) {
  setTextOutput(vm, call, vm->set.extraHandle, ".prn");
}

// The switch opens and closes the printer file only while no file was named
// through setting 24; a failure to open leaves the handle closed, silently.
void setPrinter(VMEngine* vm, const SetCall& call) {
  SetBlock& set = vm->set;
  bool old = set.value[HB_SET_PRINTER] != 0;
  itemPutL(vm, returnItem(vm), old);
  if (!call.changes()) return;
  bool printing = setLogicalRule(call.value, old);
  set.value[HB_SET_PRINTER] = printing;
  if (set.printerFileFlag) return;
  if (old && !printing) {
    closeBinary(vm, set.printHandle);
  } else if (!old && printing && set.printHandle == FS_ERROR &&
             !isEmpty(set.text[HB_SET_PRINTFILE])) {
    set.printHandle = openOutput(vm, ".prn", set.text[HB_SET_PRINTFILE], false, HB_SET_PRINTER);
  }
}

void setPrintFile(VMEngine* vm, const SetCall& call) {
  SetBlock& set = vm->set;
  char*& name = set.text[HB_SET_PRINTFILE];
  itemPutC(vm, returnItem(vm), setText(name));
  bool naming = call.changes() && call.value->type != HB_IT_NIL;
  if (naming) setStringRule(vm, name, call.value);
  bool append = call.count > 2 && setLogicalRule(call.option, false);
  if (naming) {
    closeBinary(vm, set.printHandle);
    set.printerFileFlag = 0;
    if (!isEmpty(name)) {
      set.printHandle = openOutput(vm, ".prn", name, append, HB_SET_PRINTFILE);
      set.printerFileFlag = 1;
    }
  }
  // Without a name of its own the printer file is the printer.
  if (isEmpty(name)) {
    vmFree(vm, name);
    name = static_cast<char*>(vmAlloc(vm, PRINTER_NAME_BLOCK));
    std::memcpy(name, PRINTER_NAME, std::strlen(PRINTER_NAME));
  }
}

// Naming the trace file empties it, or creates it: "wa" truncates as "w"
// does, so the option changes nothing.
void setTraceFile(VMEngine* vm, const SetCall& call) {
  char* name = vm->set.fixedText103;
  itemPutC(vm, returnItem(vm), name);
  if (!call.changes() || !itemIsString(call.value)) return;
  uint32_t length = itemStrLen(call.value);
  if (length > NAME_LIMIT) length = NAME_LIMIT;
  std::memcpy(name, itemStrPtr(call.value), length);
  name[length] = '\0';
  uint32_t error = 0;
  char* nativeName = fsNameToNative(vm, name, &error);
  if (!nativeName) return;
  bool append = itemIsLogical(call.option) && call.option->item.asLogical.value;
  FILE* file = std::fopen(nativeName, append ? "wa" : "w");
  if (file) std::fclose(file);
  vmFree(vm, nativeName);
}
