#include <dlfcn.h>

#include "../own_symbols.h"

namespace {

void* handle = nullptr;

}  // namespace

bool loadLibrary(const char* path, std::string* error) {
  handle = dlopen(path, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  if (!handle) *error = dlerror();
  return handle != nullptr;
}

void* ownSymbol(const char* name) {
  void* symbol = dlsym(handle, name);
  Dl_info symbolInfo;
  Dl_info libraryInfo;
  void* anchor = dlsym(handle, "VAR2BIN");
  if (!symbol || !anchor || !dladdr(symbol, &symbolInfo) || !dladdr(anchor, &libraryInfo)) {
    return nullptr;
  }
  return symbolInfo.dli_fbase == libraryInfo.dli_fbase ? symbol : nullptr;
}
