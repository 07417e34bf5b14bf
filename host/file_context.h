// The file layer's state of one context: the error cell, the operating
// system's last code, the searches still open and the search-path list.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kovo/host_files.h"

struct FileContext {
  uint16_t error = 0;
  uint32_t osError = 0;
  std::vector<FileFindInfo*> searches;
  std::vector<std::string> searchPaths;
};

FileContext& fileContext(VMEngine* vm);
// Closes what is still open and frees the state; run when a context ends.
void releaseFileContext(VMEngine* vm);

// The error cell's code for a Windows error code: the codes the cell knows
// stand for themselves, the rest for their nearest kin.
uint16_t cellCode(uint32_t windowsCode);
// Records a failure (or success, 0) in both the cell and the last code.
inline void fileFailure(VMEngine* vm, uint32_t windowsCode) {
  FileContext& files = fileContext(vm);
  files.osError = windowsCode;
  files.error = cellCode(windowsCode);
}
inline void fileSuccess(VMEngine* vm) {
  fileFailure(vm, 0);
}

// Windows error codes beyond those of the cell.
inline constexpr uint32_t WIN_NO_MORE_FILES = 18;
inline constexpr uint32_t WIN_WRITE_PROTECT = 19;
inline constexpr uint32_t WIN_GEN_FAILURE = 31;
inline constexpr uint32_t WIN_LOCK_VIOLATION = 33;
inline constexpr uint32_t WIN_INVALID_PARAMETER = 87;
inline constexpr uint32_t WIN_NEGATIVE_SEEK = 131;
inline constexpr uint32_t WIN_DIR_NOT_EMPTY = 145;
inline constexpr uint32_t WIN_ALREADY_EXISTS = 183;

// Releases a search's own part (the platform's listing or handle).
void releaseSearch(FileFindInfo* find);
