// Stored bytes read as if zeros followed their end: the readers of stored
// values take what is missing at the end as zero and never look past it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

struct PaddedBytes {
  const unsigned char* data;
  size_t length;  // SIZE_MAX for a stream whose caller vouches for its end

  bool holds(size_t pos, size_t count) const { return count <= length && pos <= length - count; }

  uint8_t at(size_t pos) const { return pos < length ? data[pos] : 0; }

  void copy(size_t pos, void* out, size_t count) const {
    if (holds(pos, count)) {
      std::memcpy(out, data + pos, count);
      return;
    }
    auto* bytes = static_cast<unsigned char*>(out);
    for (size_t i = 0; i < count; i++)
      bytes[i] = at(pos + i);
  }

  uint32_t le32(size_t pos) const {
    unsigned char b[4];
    copy(pos, b, 4);
    return uint32_t{b[0]} | uint32_t{b[1]} << 8 | uint32_t{b[2]} << 16 | uint32_t{b[3]} << 24;
  }

  uint32_t be32(size_t pos) const {
    unsigned char b[4];
    copy(pos, b, 4);
    return uint32_t{b[0]} << 24 | uint32_t{b[1]} << 16 | uint32_t{b[2]} << 8 | uint32_t{b[3]};
  }
};
