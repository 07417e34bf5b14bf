// Searching and replacing: RAT, STRTRAN.
#include <cstring>

#include "ct/search.h"
#include "str_result.h"

namespace {

// What STRTRAN replaces in a text: occurrences of a pattern, found left to
// right without overlapping, from the first-th on, at most count of them.
struct Replacement {
  const char* text;
  const char* end;
  const char* pattern;
  uint32_t patternLength;
  const char* replacement;
  uint32_t replacementLength;
  int64_t first;
  int64_t count;
};

// Calls visit(hit) for every occurrence to be replaced, in order.
template <typename Visit>
void forEachReplaced(const Replacement& job, Visit visit) {
  int64_t seen = 0;
  int64_t replaced = 0;
  const char* cursor = job.text;
  while (replaced < job.count) {
    const char* hit = ctAtForward(cursor, static_cast<uint32_t>(job.end - cursor), job.pattern,
                                  job.patternLength, nullptr);
    if (!hit) return;
    cursor = hit + job.patternLength;
    if (++seen >= job.first) {
      visit(hit);
      replaced++;
    }
  }
}

// The replaced text in a new buffer of `bound` bytes, which it does not
// exceed; null when there is nothing to replace.
char* buildReplaced(VMEngine* vm, const Replacement& job, uint64_t bound, uint32_t* length) {
  char* buffer = nullptr;
  char* out = nullptr;
  const char* copied = job.text;
  forEachReplaced(job, [&](const char* hit) {
    if (!buffer) out = buffer = newText(vm, bound);
    std::memcpy(out, copied, static_cast<size_t>(hit - copied));
    out += hit - copied;
    std::memcpy(out, job.replacement, job.replacementLength);
    out += job.replacementLength;
    copied = hit + job.patternLength;
  });
  if (!buffer) return nullptr;
  std::memcpy(out, copied, static_cast<size_t>(job.end - copied));
  *length = static_cast<uint32_t>(out + (job.end - copied) - buffer);
  return buffer;
}

}  // namespace

// RAT(search, text): the position of the last occurrence of search in text;
// 0 when there is none, when search is empty, or when either is no string.
KOVO_FUNC(RAT) {
  const Item* search = paramItem(vm, 1, HB_IT_STRING);
  const Item* text = paramItem(vm, 2, HB_IT_STRING);
  int32_t position = 0;
  if (search && text) {
    const char* hit = ctAtBackward(itemStrPtr(text), itemStrLen(text), itemStrPtr(search),
                                   itemStrLen(search), nullptr);
    if (hit) position = static_cast<int32_t>(hit - itemStrPtr(text)) + 1;
  }
  itemPutNL(vm, returnItem(vm), position);
}

// STRTRAN(text, search, [replace], [first], [count]): replaces occurrences of
// search, found left to right without overlapping, by replace (the empty text
// when it is missing or nil), from the first-th occurrence on (1 when
// missing) and at most count of them (all when missing). A first or count
// that is given as a number below 1 gives the empty text; one that is no
// number counts as missing. An empty search, or no occurrence to replace,
// gives the text itself. A text or search that is no string, or a replace of
// another type, is argument error 1126.
KOVO_FUNC(STRTRAN) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  const Item* search = paramItem(vm, 2, HB_IT_STRING);
  const Item* replace = paramResolved(vm, 3);
  bool hasReplace = replace && (replace->type & HB_IT_STRING);
  if (!text || !search || !(hasReplace || !replace || replace->type == HB_IT_NIL)) {
    return argError(vm, 1126, "STRTRAN", 3);
  }
  Replacement job{itemStrPtr(text),
                  itemStrPtr(text) + itemStrLen(text),
                  itemStrPtr(search),
                  itemStrLen(search),
                  hasReplace ? itemStrPtr(replace) : "",
                  hasReplace ? itemStrLen(replace) : 0,
                  paramNumberOr(vm, 4, 1),
                  paramNumberOr(vm, 5, INT64_MAX)};
  if (job.first < 1 || job.count < 1) return returnEmptyText(vm);
  // A result that grows is measured first, so that it is checked before
  // anything is allocated and built in a buffer of its exact size.
  uint64_t bound = itemStrLen(text);
  if (job.replacementLength > job.patternLength) {
    uint64_t replaced = 0;
    forEachReplaced(job, [&replaced](const char*) { replaced++; });
    uint32_t growth = job.replacementLength - job.patternLength;
    if (textTooLong(static_cast<double>(bound) + static_cast<double>(replaced) * growth)) {
      return stringOverflowError(vm, "STRTRAN", 3);
    }
    bound += replaced * growth;
  }
  uint32_t length = 0;
  char* buffer = buildReplaced(vm, job, bound, &length);
  if (!buffer) return itemReturn(vm, text);
  returnText(vm, buffer, length);
}
