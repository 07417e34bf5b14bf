// Read-ahead for handles opened for reading alone: a line reader's small
// reads and its step back over what it read beyond a line cost no system
// call while they stay inside the block read last. A seek from the start or
// the end, and any write through the layer in this process, drop the block,
// so that random access always reads what the file holds now.
#pragma once

#include <cstdint>

// Reads `count` bytes for handle `fd` through its block; false with errno set
// on a failure before anything was read.
bool readAheadRead(int fd, char* buffer, uint32_t count, uint32_t* done);
// A relative seek that stays inside the block: true with the new position.
// Any other seek drops the block and leaves the descriptor where the program
// thinks it is; false then.
bool readAheadSeek(int fd, int64_t offset, int whence, int64_t* position);
void readAheadDrop(int fd);
// Something was written through the layer: every block may be stale.
void readAheadInvalidate();
