// What each platform gives the file layer's search: the entries of a
// wildcard mask's directory that match it.
#pragma once

#include <cstdint>
#include <vector>

#include "kovo/host_files.h"

// The entries that match `mask` and the DOS attribute rule, in any order;
// 0, or the Windows code of the failure (3 for a missing directory).
uint32_t listEntries(const char* mask, uint32_t asked, std::vector<FileFindInfo>* entries);
// The DOS attribute rule: plain files (read-only and archive among them)
// always; hidden, system and directory entries only when their bit is asked for.
bool wantedEntry(uint32_t attributes, uint32_t asked);
