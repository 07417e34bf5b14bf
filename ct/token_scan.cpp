#include "ct/token_scan.h"

namespace {

// Control characters, blank, two bytes of the upper half and punctuation.
constexpr char DEFAULT_SEPARATORS[] =
    "\x00\x09\x0A\x0C\x1A\x20\x8A\x8C"
    ",.;:!?/\\<>()#&%+-*";
static_assert(sizeof DEFAULT_SEPARATORS - 1 == 26);

}  // namespace

CtText tokenSeparators(VMEngine* vm, int n) {
  Item* separators = paramItem(vm, n, HB_IT_STRING);
  if (separators && itemStrLen(separators) > 0) return ctTextOf(separators);
  return {DEFAULT_SEPARATORS, sizeof DEFAULT_SEPARATORS - 1};
}
