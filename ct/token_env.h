// The token environment: the offsets of every token of a scanned string, in
// one block of little-endian 32-bit words that is also the string programs
// save and restore.
//
//   offset 0   count     tokens recorded
//   offset 4   capacity  entry slots that follow (100 at first, grown by 100)
//   offset 8   current   index of the token TOKENNEXT gives next
//   offset 12  reserved  zero
//   16 + 8 i   start(i)  offset of token i's first character
//   20 + 8 i   end(i)    offset just past its last character
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "ct/params.h"
#include "frame/padded_bytes.h"

inline constexpr uint32_t TOKEN_ENV_HEADER = 16;
inline constexpr uint32_t TOKEN_ENTRY_SIZE = 8;
inline constexpr uint32_t TOKEN_ENV_GROWTH = 100;

// The little-endian words of the block, whatever the processor's byte order.
inline uint32_t tokenLoadWord(const unsigned char* at) {
  uint32_t value;
  std::memcpy(&value, at, sizeof value);
  if constexpr (std::endian::native == std::endian::big) value = __builtin_bswap32(value);
  return value;
}

inline void tokenStoreWord(unsigned char* at, uint32_t value) {
  if constexpr (std::endian::native == std::endian::big) value = __builtin_bswap32(value);
  std::memcpy(at, &value, sizeof value);
}

// A view of an environment block of `size` bytes. Whatever a program did to a
// saved environment, nothing is read or written outside the block: bytes the
// block lacks read as zero, and writes to them are dropped.
class TokenEnv {
 public:
  TokenEnv(unsigned char* bytes, uint32_t size) : bytes_(bytes), size_(size) {}

  uint32_t count() const { return word(0); }
  uint32_t capacity() const { return word(4); }
  uint32_t current() const { return word(8); }
  void setCurrent(uint32_t value) { setWord(8, value); }
  // The entries that are really there: below count and capacity, and whole
  // inside the block.
  uint32_t entries() const {
    uint32_t slots = size_ < TOKEN_ENV_HEADER ? 0 : (size_ - TOKEN_ENV_HEADER) / TOKEN_ENTRY_SIZE;
    uint32_t present = count() < slots ? count() : slots;
    return present < capacity() ? present : capacity();
  }
  uint32_t start(uint32_t index) const { return word(entryOffset(index)); }
  uint32_t end(uint32_t index) const { return word(entryOffset(index) + 4); }
  // The string form: 16 + 8 * capacity bytes, never more than the block holds.
  uint32_t savedLength() const;
  const char* bytes() const { return reinterpret_cast<const char*>(bytes_); }
  uint32_t size() const { return size_; }

 private:
  static uint64_t entryOffset(uint32_t index) {
    return TOKEN_ENV_HEADER + uint64_t{TOKEN_ENTRY_SIZE} * index;
  }
  // Bytes past the block read as zero.
  uint32_t word(uint64_t offset) const {
    if (offset + 4 > size_) return PaddedBytes{bytes_, size_}.le32(offset);
    return tokenLoadWord(bytes_ + offset);
  }
  void setWord(uint64_t offset, uint32_t value);

  unsigned char* bytes_;
  uint32_t size_;
};

// The tokenizer's state in a context.
struct TokenState {
  unsigned char* env;  // the current environment (from vmAlloc), or null
  uint32_t envSize;
  bool tokenCalled;  // the separators below are set from the first TOKEN on
  int32_t sepBefore;
  int32_t sepAfter;
};

TokenState& tokenState(VMEngine* vm);
// Makes `env` (or none) the current environment; returns the old one, which
// the caller now owns, and its size.
unsigned char* tokenSwapEnv(VMEngine* vm, unsigned char* env, uint32_t size, uint32_t* oldSize);

// The environment a function works on: the string that parameter n holds by
// reference, else the current one.
struct ChosenEnv {
  bool found;
  bool fromParam;
  TokenEnv env;
};
// With `writable`, a string parameter is made safe to change in place (it is
// copied only when its text is shared).
ChosenEnv tokenEnvFor(VMEngine* vm, int n, bool writable);

// Scans the text as TOKENINIT does into a new block of *size bytes (and one
// more, so that a string item can adopt it); null when memory runs out.
unsigned char* tokenEnvBuild(VMEngine* vm, CtText text, CtText separators, uint32_t skip,
                             uint32_t* size);
