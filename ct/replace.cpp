// The work text of a replacement is kept in one block with a gap in it: the
// finished part at the front, the part still to be searched at the back. A
// replacement moves the bytes before its match to the front and writes
// itself into the gap, so every byte is moved a bounded number of times and
// the search always sees the rest of the text in one piece, up to its end.
#include "ct/replace.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "ct/search.h"

namespace {

class GapText {
 public:
  explicit GapText(VMEngine* vm) : vm_(vm) {}
  GapText(const GapText&) = delete;
  GapText& operator=(const GapText&) = delete;
  ~GapText() { vmFree(vm_, block_); }

  bool init(CtText text, uint64_t gap) {
    capacity_ = text.length + gap;
    block_ = static_cast<char*>(vmTryAlloc(vm_, capacity_ + 1));
    if (!block_) return false;
    back_ = gap;
    std::memcpy(block_ + back_, text.bytes, text.length);
    return true;
  }

  uint64_t length() const { return front_ + (capacity_ - back_); }
  // The rest of the text from `at` on; `at` is never inside the front.
  const char* from(uint64_t at) const { return block_ + back_ + (at - front_); }

  // Puts the replacement in place of the match at `at`: its first
  // `frontPart` bytes are finished, the others are searched again.
  bool replace(uint64_t at, uint32_t matchLength, CtText replacement, uint32_t frontPart) {
    size_t finished = at - front_;
    std::memmove(block_ + front_, block_ + back_, finished);
    front_ += finished;
    back_ += finished;
    uint32_t searchedAgain = replacement.length - frontPart;
    size_t needed = front_ + frontPart + searchedAgain;
    if (back_ + matchLength < needed && !grow(needed - (back_ + matchLength))) return false;
    std::memcpy(block_ + front_, replacement.bytes, frontPart);
    front_ += frontPart;
    back_ = back_ + matchLength - searchedAgain;
    std::memcpy(block_ + back_, replacement.bytes + frontPart, searchedAgain);
    return true;
  }

  // Closes the gap and hands the block over.
  char* release(uint32_t* resultLength) {
    size_t total = length();
    std::memmove(block_ + front_, block_ + back_, capacity_ - back_);
    block_[total] = '\0';
    *resultLength = static_cast<uint32_t>(total);
    return std::exchange(block_, nullptr);
  }

 private:
  // Widens the gap by at least `extra` bytes, doubling the block where it can.
  bool grow(size_t extra) {
    size_t wanted = capacity_ + extra;
    size_t doubled = std::max(wanted, 2 * capacity_);
    size_t capacity = doubled;
    auto* grown = static_cast<char*>(vmTryRealloc(vm_, block_, capacity + 1));
    if (!grown) {
      capacity = wanted;
      grown = static_cast<char*>(vmTryRealloc(vm_, block_, capacity + 1));
    }
    if (!grown) return false;
    size_t tail = capacity_ - back_;
    std::memmove(grown + capacity - tail, grown + back_, tail);
    block_ = grown;
    back_ = capacity - tail;
    capacity_ = capacity;
    return true;
  }

  VMEngine* vm_;
  char* block_ = nullptr;
  size_t capacity_ = 0;
  size_t front_ = 0;  // finished bytes at the start of the block
  size_t back_ = 0;   // the rest of the text is [back_, capacity_)
};

// Room that the replacements will need: exact without multi-pass, where the
// matches are those of the original text; with multi-pass the block grows.
uint64_t initialGap(VMEngine* vm, CtText text, uint32_t start, CtText pattern, CtText replacement,
                    uint32_t n) {
  if (replacement.length <= pattern.length) return 0;
  uint64_t growth = replacement.length - pattern.length;
  if (vm->ct.multiPass) return growth;
  uint32_t found = 0;
  ctSearchNth(vm, text.bytes + start, text.length - start, pattern.bytes, pattern.length, n,
              nullptr, &found);
  return growth * found;
}

// With multi-pass on, a replacement that holds the pattern behind its first
// byte is found again at every step, and the text grows by at least a byte
// each time: when the steps allowed would take it past the limit, the end is
// known before the first one.
bool feedsItselfPastLimit(VMEngine* vm, CtText text, CtText pattern, CtText replacement, uint32_t n,
                          uint64_t limit) {
  if (!vm->ct.multiPass || replacement.length < 2 || replacement.length <= pattern.length) {
    return false;
  }
  uint32_t matchLength = 0;
  if (!ctSearchForward(vm, replacement.bytes + 1, replacement.length - 1, pattern.bytes,
                       pattern.length, &matchLength)) {
    return false;
  }
  uint64_t growth = replacement.length - pattern.length;
  return text.length + uint64_t{n} * growth >= limit;
}

}  // namespace

char* ctReplaceMatches(VMEngine* vm, CtText text, uint32_t start, CtText pattern,
                       CtText replacement, uint32_t n, uint64_t limit, uint32_t* resultLength) {
  if (feedsItselfPastLimit(vm, text, pattern, replacement, n, limit)) return nullptr;
  uint64_t gap = initialGap(vm, text, start, pattern, replacement, n);
  if (text.length + gap >= limit) return nullptr;
  GapText work(vm);
  if (!work.init(text, gap)) return nullptr;
  bool multiPass = vm->ct.multiPass != 0;
  uint32_t frontPart = multiPass ? std::min(replacement.length, 1u) : replacement.length;
  uint32_t step = multiPass ? 1 : replacement.length;
  uint64_t next = start;
  for (uint32_t count = 0; count < n && next <= work.length(); count++) {
    const char* searched = work.from(next);
    uint32_t matchLength = 0;
    const char* match = ctSearchForward(vm, searched, static_cast<uint32_t>(work.length() - next),
                                        pattern.bytes, pattern.length, &matchLength);
    if (!match) break;
    if (work.length() - matchLength + replacement.length >= limit) return nullptr;
    uint64_t at = next + static_cast<uint64_t>(match - searched);
    if (!work.replace(at, matchLength, replacement, frontPart)) return nullptr;
    next = at + step;
  }
  return work.release(resultLength);
}
