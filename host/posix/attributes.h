// Windows attribute bits of a POSIX entry: 0x10 a directory, 0x20 archive for
// any other entry, 0x01 read-only when nobody may write it, 0x02 hidden for a
// name beginning with ".", and hidden and system as they were set, kept in an
// extended attribute.
#pragma once

#include <sys/stat.h>

#include <cstdint>

uint32_t attributesOf(const char* native, const struct stat& info);
