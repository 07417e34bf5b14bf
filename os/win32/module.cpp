#include <windows.h>

#include "os/module.h"

void* osCurrentModule() {
  HMODULE module = nullptr;
  if (!GetModuleHandleExA(
          GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
          reinterpret_cast<LPCSTR>(&osCurrentModule), &module)) {
    return nullptr;
  }
  return module;
}
