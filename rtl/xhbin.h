// The XHBIN encoding of values: a six-byte signature and one item, each item
// a 32-bit little-endian tag equal to its type word and its payload.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/frame.h"

inline constexpr char XHBIN_SIGNATURE[] = "XHBIN";  // with its NUL: six bytes
inline constexpr uint32_t XHBIN_SIGNATURE_LENGTH = 6;

// The stream of a value in a zero-filled heap buffer (vmAlloc; the caller
// frees it or hands it to an item), large enough for the whole encoding;
// *length is the length that the stream is given: the computed size, which
// falls three bytes short per logical. Null when that length does not fit a
// string.
char* xhbinEncode(VMEngine* vm, const Item* item, uint32_t* length);

struct XhbinDecoded {
  bool ok;     // false: the stream needs more than its bytes can give; dst is nil
  size_t end;  // where the item ended; beyond `length` when zeros were read in
};
// Decodes the item after the signature. Bytes past `length` read as zero, up
// to eight bytes or three per logical the stream could hold, whichever is
// more: all that the writer's short length can leave out.
XhbinDecoded xhbinDecode(VMEngine* vm, const unsigned char* stream, size_t length, Item* dst);

// Shows the message box of a type that the encoding has no place for;
// `format` holds one %X for the type word.
void xhbinReportType(VMEngine* vm, const char* format, uint32_t type, const char* caption);

// The natives for other native code of the host VM.
extern "C" KOVO_EXPORT char* var2bin(VMEngine* vm, const Item* item, uint32_t* pLen);
extern "C" KOVO_EXPORT Item* bin2item(VMEngine* vm, const char* pBuf);
