// Data encodings of the host: the array text form and the 22-character
// identifier. The host also links zlib for its callers: compress, compress2,
// uncompress, adler32 and zError are zlib's own, declared by <zlib.h>.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kovo/export.h"
#include "kovo/item.h"
#include "kovo/vmengine.h"

// ---- The array text form ----------------------------------------------------------
// A header ("#54A" when written; "#52A" is read too) and one element; the
// digit is the element-field width: every size is written in twice that many
// hexadecimal digits. docs/array-text-form.md describes the layout.

inline constexpr uint32_t ARRAY_TEXT_HEADER_LENGTH = 4;

// The header that ArrayToStr writes after: "#54A".
KOVO_HOST_API const char* arrayStrHeader(VMEngine* vm);
// Bytes that the text form of an array takes, header included.
KOVO_HOST_API uint64_t arrayGetStrLen(VMEngine* vm, const Item* array);
// Writes the array after the header that `buffer` starts with; `size` is what
// arrayGetStrLen asked for. Returns the final length, header included.
KOVO_HOST_API uint64_t ArrayToStr(VMEngine* vm, const Item* array, char* buffer, uint64_t size);
// The item type of the element at the start of `text` by its tag alone;
// HB_IT_NIL when there is no tag the form knows. `width` is 2 or 4.
KOVO_HOST_API HB_TYPE arrayGetElemType(const char* text, uint32_t length, int width);
// Reads the element at the start of `text` into dst. Returns the bytes it took,
// or 0 (dst nil) when the text holds no well-formed element.
KOVO_HOST_API uint32_t arrayGetElemValue(VMEngine* vm, const char* text, uint32_t length, int width,
                                         Item* dst);
// A whole text form, header and one array element filling it, read into dst;
// false (dst nil) when it is no such text.
KOVO_HOST_API bool StrToArray(VMEngine* vm, const char* text, uint32_t length, Item* dst);

// ---- Identifiers -------------------------------------------------------------------
// The 22-character identifier of a GUID's 16 bytes: the 128 bits in URL-safe
// base64 without padding. A heap text the caller owns (an item may adopt it).
KOVO_HOST_API char* genguid22(VMEngine* vm, const uint8_t guid[16]);
