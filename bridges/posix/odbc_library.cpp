#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

#include "bridges/odbc_api.h"

namespace {
// unixODBC's driver manager, as Debian installs it; another one (iODBC's
// libiodbc.so.2, say) is named by the environment variable.
constexpr char DEFAULT_LIBRARY[] = "libodbc.so.2";
constexpr char LIBRARY_VARIABLE[] = "KOVO_ODBC_LIBRARY";
}  // namespace

void* odbcLibraryOpen(char* what, size_t size) {
  const char* name = std::getenv(LIBRARY_VARIABLE);
  if (!name || !*name) name = DEFAULT_LIBRARY;
  // Kept open for the life of the process: handles live in it.
  void* library = dlopen(name, RTLD_NOW | RTLD_LOCAL);
  if (library) {
    std::snprintf(what, size, "%s", name);
  } else {
    // dlerror's text begins with the name it looked for.
    const char* reason = dlerror();
    std::snprintf(what, size, "%s; %s names another", reason ? reason : name, LIBRARY_VARIABLE);
  }
  return library;
}

// Bound by name: the ordinals are the Windows driver manager's numbering.
void* odbcLibraryFunction(void* library, const char* name, int) {
  return dlsym(library, name);
}

// There is no desktop window to prompt over.
SQLHWND odbcParentWindow() {
  return nullptr;
}
