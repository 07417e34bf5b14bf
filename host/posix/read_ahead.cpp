#include "read_ahead.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>

namespace {

constexpr uint32_t BLOCK_SIZE = 64 * 1024;
constexpr int TRACKED = 1 << 16;

struct Block {
  int64_t start;        // file offset of data[0]
  uint32_t size;        // bytes held
  uint32_t pos;         // next byte to hand out
  uint64_t generation;  // writes seen when it was read
  char data[BLOCK_SIZE];
};

std::atomic<uint64_t> writeGeneration{0};
// Owned by the slot. A descriptor's number is reused by whichever thread opens
// next once it is closed, so the slot passes between threads: the drop before
// the close releases it and the drop after the open acquires it.
std::atomic<Block*> blocks[TRACKED];

Block* blockOf(int fd) {
  if (fd < 0 || fd >= TRACKED) return nullptr;
  Block* block = blocks[fd].load(std::memory_order_acquire);
  // An empty block holds nothing ahead of the descriptor: it stands where the
  // program is, and its old start must not move it back there.
  if (block && block->size > 0 &&
      block->generation != writeGeneration.load(std::memory_order_relaxed)) {
    // Written meanwhile: put the descriptor where the program is and forget the rest.
    lseek(fd, block->start + block->pos, SEEK_SET);
    block->size = block->pos = 0;
  }
  return block;
}

// Puts the descriptor back where the program thinks it is and empties the block.
void settle(int fd, Block* block) {
  if (block->pos < block->size) lseek(fd, block->start + block->pos, SEEK_SET);
  block->size = block->pos = 0;
}

ssize_t readOnce(int fd, char* into, uint32_t count) {
  for (;;) {
    ssize_t got = read(fd, into, count);
    if (got >= 0 || errno != EINTR) return got;
  }
}

}  // namespace

bool readAheadRead(int fd, char* buffer, uint32_t count, uint32_t* done) {
  *done = 0;
  if (fd < 0 || fd >= TRACKED) return false;
  Block* block = blockOf(fd);
  if (!block) {
    block = new Block;  // left unfilled: only what is read is looked at
    block->size = block->pos = 0;
    blocks[fd].store(block, std::memory_order_release);
  }
  while (*done < count) {
    if (block->pos < block->size) {
      uint32_t take = block->size - block->pos;
      if (take > count - *done) take = count - *done;
      std::memcpy(buffer + *done, block->data + block->pos, take);
      block->pos += take;
      *done += take;
      continue;
    }
    uint32_t wanted = count - *done;
    if (wanted >= BLOCK_SIZE) {
      // Large reads go straight into the caller's buffer.
      ssize_t got = readOnce(fd, buffer + *done, wanted);
      if (got < 0) return *done > 0;
      *done += static_cast<uint32_t>(got);
      if (got == 0 || static_cast<uint32_t>(got) < wanted) break;
      continue;
    }
    off_t start = lseek(fd, 0, SEEK_CUR);
    if (start < 0) return *done > 0;
    ssize_t got = readOnce(fd, block->data, BLOCK_SIZE);
    if (got < 0) return *done > 0;
    block->start = start;
    block->size = static_cast<uint32_t>(got);
    block->pos = 0;
    block->generation = writeGeneration.load(std::memory_order_relaxed);
    if (got == 0) break;
  }
  return true;
}

bool readAheadSeek(int fd, int64_t offset, int whence, int64_t* position) {
  Block* block = blockOf(fd);
  if (!block || block->size == 0) return false;
  int64_t here = block->start + block->pos;
  if (whence == SEEK_CUR) {
    int64_t target = here + offset;
    if (target >= block->start && target <= block->start + block->size) {
      block->pos = static_cast<uint32_t>(target - block->start);
      *position = target;
      return true;
    }
  }
  settle(fd, block);
  return false;
}

void readAheadDrop(int fd) {
  if (fd >= 0 && fd < TRACKED) delete blocks[fd].exchange(nullptr, std::memory_order_acq_rel);
}

void readAheadInvalidate() {
  writeGeneration.fetch_add(1, std::memory_order_relaxed);
}
