// The library as a DLL: loaded with LoadLibraryA (a bare name is found beside
// the shell first), its functions found by GetProcAddress, which searches the
// DLL's own export table only, and listed from that table.
#include <windows.h>

#include <algorithm>
#include <cctype>

#include "library.h"

namespace {

std::string lastErrorText(const std::string& path) {
  DWORD code = GetLastError();
  char text[512] = "";
  DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                code, 0, text, sizeof text, nullptr);
  while (length > 0 && (text[length - 1] == '\n' || text[length - 1] == '\r'))
    text[--length] = 0;
  return path + ": " + (length ? std::string(text) : "error " + std::to_string(code));
}

}  // namespace

Library::Library(const std::string& path) {
  // The library stays loaded for the life of the process, as the
  // interpreter keeps it.
  handle_ = LoadLibraryA(path.c_str());
  if (!handle_) error_ = lastErrorText(path);
  base_ = handle_;
}

VMFunction Library::find(const std::string& name) const {
  return reinterpret_cast<VMFunction>(native(name));
}

void* Library::native(const std::string& name) const {
  if (!handle_) return nullptr;
  // Through a plain pointer: FARPROC's own type says nothing of the symbol's.
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name.c_str()));
}

std::vector<std::string> Library::functionNames() const {
  std::vector<std::string> names;
  if (!base_) return names;
  auto* image = static_cast<const unsigned char*>(base_);
  auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(image);
  auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(image + dos->e_lfanew);
  const IMAGE_DATA_DIRECTORY& directory =
      nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
  if (directory.Size == 0) return names;
  auto* exports = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(image + directory.VirtualAddress);
  auto* nameOffsets = reinterpret_cast<const DWORD*>(image + exports->AddressOfNames);
  for (DWORD i = 0; i < exports->NumberOfNames; i++) {
    const char* name = reinterpret_cast<const char*>(image + nameOffsets[i]);
    if (isFunctionName(name)) names.emplace_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}
