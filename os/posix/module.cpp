#include "os/module.h"

#include <dlfcn.h>

void* osCurrentModule() {
  Dl_info info;
  if (dladdr(reinterpret_cast<void*>(&osCurrentModule), &info) == 0) return nullptr;
  return info.dli_fbase;
}
