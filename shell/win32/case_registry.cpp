// Every root key is redirected, for this process only, to a fresh key under
// the real HKEY_CURRENT_USER while the case runs; the key and everything the
// case wrote under it are deleted afterwards.
#include "case_registry.h"

#include <windows.h>

#include <random>
#include <string>

namespace {

const HKEY ROOTS[] = {HKEY_CLASSES_ROOT, HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE, HKEY_USERS,
                      HKEY_CURRENT_CONFIG};

// Made once per process: one name for the cases' keys, which never overlap.
const std::string& caseKeyName() {
  static const std::string name = "Software\\kovo-case-" + std::to_string(std::random_device()());
  return name;
}

void restoreRoots() {
  for (HKEY root : ROOTS)
    RegOverridePredefKey(root, nullptr);
}

}  // namespace

CaseRegistry::CaseRegistry() {
  HKEY caseKey = nullptr;
  if (RegCreateKeyExA(HKEY_CURRENT_USER, caseKeyName().c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                      nullptr, &caseKey, nullptr) != ERROR_SUCCESS)
    return;
  int index = 0;
  for (HKEY root : ROOTS) {
    HKEY redirected = nullptr;
    const std::string name = "root" + std::to_string(index++);
    if (RegCreateKeyExA(caseKey, name.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &redirected,
                        nullptr) != ERROR_SUCCESS)
      continue;
    // The override keeps a handle of its own.
    RegOverridePredefKey(root, redirected);
    RegCloseKey(redirected);
  }
  RegCloseKey(caseKey);
}

CaseRegistry::~CaseRegistry() {
  restoreRoots();
  RegDeleteTreeA(HKEY_CURRENT_USER, caseKeyName().c_str());
}
