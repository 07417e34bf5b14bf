// Scanning a long text for the characters of a set, one after the other, as
// the tokenizer does with its separators.
#pragma once

#include <cstdint>

// Gives the characters of the text that are in the set, in order: each call
// of next() finds what ctAtCharSet finds in the text behind the character
// found before (the first call: in the whole text). The set's membership is
// worked out for a block of the text at a time.
class CtCharSetScanner {
 public:
  CtCharSetScanner(const char* text, uint32_t length, const char* set, uint32_t setLength);
  // Null when no character of the set is left.
  const char* next();

 private:
  uint64_t blockMembers(uint32_t blockStart) const;

  const unsigned char* text_;
  uint32_t length_;
  uint32_t blockStart_ = 0;
  uint64_t pending_ = 0;  // members of the current block not yet given out
  bool started_ = false;
  bool member_[256] = {};
  // For the vector test: by the low half of a byte, one bit per high half of
  // the members, for high halves 0-7 and 8-15.
  alignas(16) uint8_t lowRows_[16] = {};
  alignas(16) uint8_t highRows_[16] = {};
};
