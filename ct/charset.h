// Scanning a long text for the characters of a set, one after the other, as
// the tokenizer does with its separators.
#pragma once

#include <cstdint>

// A set of characters prepared for scanning: the membership of every byte.
class CtCharSet {
 public:
  CtCharSet(const char* set, uint32_t setLength);
  // One bit per byte of block[0, size), size at most 64: set for a member.
  uint64_t members(const char* block, uint32_t size) const;
  // The number of runs of characters outside the set: the tokens of a text
  // when runs of separators give no empty tokens.
  uint32_t runsOutside(const char* text, uint32_t length) const;

 private:
  bool member_[256] = {};
  // For the vector test: by the low half of a byte, one bit per high half of
  // the members, for high halves 0-7 and 8-15.
  alignas(16) uint8_t lowRows_[16] = {};
  alignas(16) uint8_t highRows_[16] = {};
};

// Gives the characters of the text that are in the set, in order: each call
// of next() finds what ctAtCharSet finds in the text behind the character
// found before (the first call: in the whole text). The set's membership is
// worked out for a block of the text at a time.
class CtCharSetScanner {
 public:
  CtCharSetScanner(const char* text, uint32_t length, const CtCharSet& set)
      : set_(&set), text_(text), length_(length), pending_(blockMembers(0)) {}

  // Null when no character of the set is left.
  const char* next() {
    while (pending_ == 0) {
      if (length_ - blockStart_ <= BLOCK) return nullptr;
      blockStart_ += BLOCK;
      pending_ = blockMembers(blockStart_);
    }
    int bit = __builtin_ctzll(pending_);
    pending_ &= pending_ - 1;
    return text_ + blockStart_ + bit;
  }

 private:
  static constexpr uint32_t BLOCK = 64;

  uint64_t blockMembers(uint32_t blockStart) const {
    uint32_t rest = length_ - blockStart;
    return set_->members(text_ + blockStart, rest < BLOCK ? rest : BLOCK);
  }

  const CtCharSet* set_;
  const char* text_;
  uint32_t length_;
  uint32_t blockStart_ = 0;
  uint64_t pending_;  // members of the current block not yet given out
};
