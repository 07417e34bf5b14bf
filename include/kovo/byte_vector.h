// Sixteen bytes handled at once: the compiler turns these operations into the
// machine's vector instructions (SSE2 on x86-64). Whole-string loops of the
// host and the library use them where a byte-at-a-time loop would be the
// bottleneck.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

typedef unsigned char ByteVector __attribute__((vector_size(16)));

inline constexpr size_t BYTE_VECTOR_SIZE = sizeof(ByteVector);

inline ByteVector loadBytes(const char* from) {
  ByteVector bytes;
  std::memcpy(&bytes, from, sizeof bytes);
  return bytes;
}

inline void storeBytes(char* to, ByteVector bytes) {
  std::memcpy(to, &bytes, sizeof bytes);
}

inline ByteVector repeatByte(unsigned char byte) {
  return ByteVector{} + byte;
}

// Whether any lane of a comparison's result is set.
inline bool anyLane(ByteVector lanes) {
  uint64_t halves[2];
  std::memcpy(halves, &lanes, sizeof halves);
  return (halves[0] | halves[1]) != 0;
}

// One bit per lane of a comparison's result (lanes are all ones or all
// zeros): bit k for lane k.
inline uint32_t laneMask(ByteVector lanes) {
  uint64_t halves[2];
  std::memcpy(halves, &lanes, sizeof halves);
  auto gather = [](uint64_t half) {
    return static_cast<uint32_t>(((half & 0x8080808080808080ull) * 0x0002040810204081ull) >> 56);
  };
  return gather(halves[0]) | gather(halves[1]) << 8;
}
