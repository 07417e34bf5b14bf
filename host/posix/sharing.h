// Sharing modes between every process that uses the file layer, as Windows
// keeps them: open-file-description locks on reserved offsets far beyond any
// real data, one byte per access kind and per deny kind. They belong to the
// open file, so they go with its last descriptor, and with the process.
#pragma once

#include <cstdint>

// Takes the locks of an open with `mode` (access and sharing bits) on `fd`;
// false when an open of another holder conflicts with it.
bool takeSharing(int fd, uint16_t mode);
// Whether anybody holds `path` open through the layer (with write denied, when
// `denyingWrite`): Windows refuses to delete or rename an open file, and to
// change the attributes of one that is locked.
bool heldOpen(const char* path, bool denyingWrite);
