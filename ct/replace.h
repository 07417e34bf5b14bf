// Replacing every match of a pattern in a text, as ATREPL does.
#pragma once

#include <cstdint>

#include "ct/params.h"

// Replaces the first n matches (n = CT_ALL: every one) that the forward search
// of the context's settings finds from offset `start` on, in a work copy of
// the text. After a replacement the next search starts one character behind
// the match's start in multi-pass mode, so that a replacement can itself be
// matched again, else right behind the replacement. Returns the new text
// (with room for its zero byte, to be adopted) and its length, or null when
// it would reach `limit` bytes or the memory runs out.
char* ctReplaceMatches(VMEngine* vm, CtText text, uint32_t start, CtText pattern,
                       CtText replacement, uint32_t n, uint64_t limit, uint32_t* resultLength);
