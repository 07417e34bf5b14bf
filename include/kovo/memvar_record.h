// The fields of a ".mem" record header (MEMVAR_HEADER_SIZE bytes), as the
// host writes them and the library reads them.
#pragma once

#include <cstdint>

// Name bytes before the name's terminating zero.
inline constexpr uint32_t MEMVAR_NAME_LENGTH = 10;
inline constexpr uint32_t MEMVAR_TYPE_OFFSET = 11;
// The value's length (low byte, then high byte), or a number's total width and decimals.
inline constexpr uint32_t MEMVAR_LENGTH_OFFSET = 16;
inline constexpr uint32_t MEMVAR_HIGH_OFFSET = 17;

// Type bytes: the type letter plus 128.
inline constexpr uint8_t MEMVAR_TYPE_CHARACTER = 'C' + 128;
inline constexpr uint8_t MEMVAR_TYPE_DATE = 'D' + 128;
inline constexpr uint8_t MEMVAR_TYPE_LOGICAL = 'L' + 128;
inline constexpr uint8_t MEMVAR_TYPE_NUMBER = 'N' + 128;
