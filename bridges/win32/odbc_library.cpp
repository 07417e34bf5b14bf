#include <windows.h>

#include <cstdio>

#include "bridges/odbc_api.h"

namespace {
constexpr char DRIVER_MANAGER[] = "odbc32.dll";
}  // namespace

void* odbcLibraryOpen(char* what, size_t size) {
  HMODULE library = LoadLibraryA(DRIVER_MANAGER);
  if (library) {
    std::snprintf(what, size, "%s", DRIVER_MANAGER);
  } else {
    std::snprintf(what, size, "%s: error %lu", DRIVER_MANAGER,
                  static_cast<unsigned long>(GetLastError()));
  }
  return reinterpret_cast<void*>(library);
}

// Bound by ordinal, the driver manager's published export numbering.
void* odbcLibraryFunction(void* library, const char*, int ordinal) {
  return reinterpret_cast<void*>(
      GetProcAddress(static_cast<HMODULE>(library), MAKEINTRESOURCEA(ordinal)));
}

SQLHWND odbcParentWindow() {
  return GetDesktopWindow();
}
