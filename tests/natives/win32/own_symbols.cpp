// GetProcAddress searches the DLL's own export table only.
#include <windows.h>

#include "../own_symbols.h"

namespace {

HMODULE handle = nullptr;

}  // namespace

bool loadLibrary(const char* path, std::string* error) {
  handle = LoadLibraryA(path);
  if (!handle) *error = "LoadLibraryA failed with error " + std::to_string(GetLastError());
  return handle != nullptr;
}

void* ownSymbol(const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(handle, name));
}
