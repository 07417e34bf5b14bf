// The token scan that the one-shot and the incremental tokenizer share.
#pragma once

#include <cstdint>

#include "ct/charset.h"
#include "ct/params.h"

// Parameter n when it is a non-empty string, else the default separators.
CtText tokenSeparators(VMEngine* vm, int n);

// The separators that the last two searches found, as codes; -1 for none.
struct SeparatorTrail {
  int32_t before = -1;
  int32_t after = -1;

  void record(const char* separator) {
    before = after;
    after = separator ? static_cast<unsigned char>(*separator) : -1;
  }
};

struct TokenStep {
  uint32_t start;         // offset of the token's first character
  const char* separator;  // the separator that ends it; null when the text does
};

class TokenScan {
 public:
  // `skip` is the number of searches a token may take (CT_ALL: no limit);
  // every search is recorded in the trail when there is one.
  TokenScan(CtText text, const CtCharSet& separators, uint32_t skip,
            SeparatorTrail* trail = nullptr)
      : text_(text), separators_(text.bytes, text.length, separators), skip_(skip), trail_(trail) {}

  // The next token. It starts one character behind the previous separator;
  // while the separator found lies right there (an empty token) and fewer
  // than `skip` searches have run for it, the search goes on behind it.
  TokenStep step() {
    for (uint32_t searches = 1;; searches++) {
      uint32_t start = next_;
      const char* separator = separators_.next();
      if (trail_) trail_->record(separator);
      next_ = separator ? offset(separator) + 1 : text_.length;
      if (!separator || offset(separator) != start || searches >= skip_) return {start, separator};
    }
  }
  // Offset just past the token: its separator, or the end of the text.
  uint32_t end(const TokenStep& token) const {
    return token.separator ? offset(token.separator) : text_.length;
  }
  // Whether the text ended right behind the previous separator.
  bool nothingLeft(const TokenStep& token) const { return token.start == text_.length; }
  bool separatorEndsText(const TokenStep& token) const {
    return token.separator && offset(token.separator) + 1 == text_.length;
  }

 private:
  uint32_t offset(const char* at) const { return static_cast<uint32_t>(at - text_.bytes); }

  CtText text_;
  CtCharSetScanner separators_;
  uint32_t skip_;
  SeparatorTrail* trail_;
  uint32_t next_ = 0;  // where the next token starts
};
