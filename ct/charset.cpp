// Set-membership scanning a block of 64 bytes at a time: one bit per byte of
// the block tells whether it is in the set, and the members are then given
// out by their bits. Where the processor has AVX2 the bits of a whole block
// come from a table lookup by the two halves of each byte.
#include "charset.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

#if defined(__x86_64__)
bool hasVectorLookup() {
  static const bool available = __builtin_cpu_supports("avx2");
  return available;
}

// A byte is a member when its row (chosen by its low half, from the table of
// its high half's range) has the bit of its high half.
__attribute__((target("avx2"))) uint32_t membersOf32(__m256i bytes, __m256i lowRows,
                                                     __m256i highRows) {
  const __m256i nibble = _mm256_set1_epi8(0x0F);
  const __m256i bitOfHigh =
      _mm256_setr_epi8(1, 2, 4, 8, 16, 32, 64, -128, 1, 2, 4, 8, 16, 32, 64, -128, 1, 2, 4, 8, 16,
                       32, 64, -128, 1, 2, 4, 8, 16, 32, 64, -128);
  __m256i low = _mm256_and_si256(bytes, nibble);
  __m256i high = _mm256_and_si256(_mm256_srli_epi16(bytes, 4), nibble);
  __m256i row =
      _mm256_blendv_epi8(_mm256_shuffle_epi8(lowRows, low), _mm256_shuffle_epi8(highRows, low),
                         _mm256_cmpgt_epi8(high, _mm256_set1_epi8(7)));
  __m256i bit = _mm256_shuffle_epi8(bitOfHigh, high);
  __m256i hit = _mm256_cmpeq_epi8(_mm256_and_si256(row, bit), bit);
  return static_cast<uint32_t>(_mm256_movemask_epi8(hit));
}

__attribute__((target("avx2"))) uint64_t vectorMembers(const unsigned char* block,
                                                       const uint8_t* lowRows,
                                                       const uint8_t* highRows) {
  __m256i low =
      _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(lowRows)));
  __m256i high =
      _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(highRows)));
  auto* lanes = reinterpret_cast<const __m256i*>(block);
  uint64_t first = membersOf32(_mm256_loadu_si256(lanes), low, high);
  uint64_t second = membersOf32(_mm256_loadu_si256(lanes + 1), low, high);
  return first | second << 32;
}
#endif

}  // namespace

CtCharSet::CtCharSet(const char* set, uint32_t setLength) {
  for (uint32_t i = 0; i < setLength; i++) {
    auto byte = static_cast<unsigned char>(set[i]);
    member_[byte] = true;
    uint8_t* rows = byte < 0x80 ? lowRows_ : highRows_;
    rows[byte & 0x0F] |= static_cast<uint8_t>(1u << ((byte >> 4) & 7));
  }
}

uint64_t CtCharSet::members(const char* block, uint32_t size) const {
  auto* bytes = reinterpret_cast<const unsigned char*>(block);
  // The scan reads block after block: ask for the ones ahead early.
  __builtin_prefetch(bytes + 512);
#if defined(__x86_64__)
  if (size == 64 && hasVectorLookup()) return vectorMembers(bytes, lowRows_, highRows_);
#endif
  uint64_t members = 0;
  for (uint32_t i = 0; i < size; i++)
    members |= uint64_t{member_[bytes[i]]} << i;
  return members;
}

uint32_t CtCharSet::runsOutside(const char* text, uint32_t length) const {
  uint32_t runs = 0;
  uint64_t memberBefore = 1;  // the text starts as if behind a member
  for (uint32_t at = 0; at < length; at += 64) {
    uint32_t size = length - at < 64 ? length - at : 64;
    uint64_t member = members(text + at, size);
    if (size < 64) member |= ~uint64_t{0} << size;
    runs += static_cast<uint32_t>(__builtin_popcountll(~member & (member << 1 | memberBefore)));
    memberBefore = member >> 63;
  }
  return runs;
}
