// Sixteen bytes handled at once: the compiler turns these operations into the
// machine's vector instructions (SSE2 on x86-64). Whole-string loops of the
// host use them where a byte-at-a-time loop would be the bottleneck.
#pragma once

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

inline bool anyLane(ByteVector lanes) {
  uint64_t halves[2];
  std::memcpy(halves, &lanes, sizeof halves);
  return (halves[0] | halves[1]) != 0;
}

// Calls visit(i) for every byte i (0 to 15, in order) of `lanes` that is not
// zero, until visit returns true; returns whether one did.
template <typename Visit>
bool anyLaneWhere(ByteVector lanes, Visit visit) {
  uint64_t halves[2];
  std::memcpy(halves, &lanes, sizeof halves);
  for (size_t half = 0; half < 2; half++) {
    for (uint64_t bits = halves[half]; bits != 0;) {
      size_t byte = static_cast<size_t>(__builtin_ctzll(bits)) / 8;
      if (visit(half * 8 + byte)) return true;
      bits &= ~(uint64_t{0xFF} << (8 * byte));
    }
  }
  return false;
}
