// The registry one case sees: a store of its own while the case runs, gone
// afterwards, so that no case sees what another left. On POSIX the store is a
// file in the case's directory (KOVO_REGISTRY), so there is nothing to add;
// on Windows every root key is a fresh key of its own for the process.
#pragma once

class CaseRegistry {
 public:
  CaseRegistry();
  ~CaseRegistry();
  CaseRegistry(const CaseRegistry&) = delete;
  CaseRegistry& operator=(const CaseRegistry&) = delete;
};
