// Operands of the bit functions of the text tools: a number, or a string of
// hexadecimal digits.
#pragma once

#include <cstdint>
#include <optional>

#include "kovo/vmengine.h"

// A hexadecimal operand, read from its last character backwards: at most the
// last four characters count, upper-case digits only, and the first character
// that is no digit ends the number with the digits read so far.
uint32_t hexOperandValue(const char* text, uint32_t length);

// Parameter n as a bit operand: anything numeric-compatible (a one-character
// string too) is its 32-bit value, another string a hexadecimal operand.
// Nothing for any other parameter.
std::optional<uint32_t> bitOperand(VMEngine* vm, int n);
