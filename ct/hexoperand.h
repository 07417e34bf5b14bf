// Operands of the bit functions of the text tools: a number, or a string of
// hexadecimal digits.
#pragma once

#include <cstdint>
#include <optional>

#include "kovo/vmengine.h"

// A hexadecimal operand, read from its last character backwards: at most the
// last four characters count, only "0"-"9" and upper-case "A"-"F" are digits,
// and the first other character ends the number with the digits read so far.
uint32_t hexOperandValue(const char* text, uint32_t length);

// Parameter n as a bit operand: a string is a hexadecimal operand, anything
// numeric-compatible its 32-bit value. Nothing for any other parameter.
std::optional<uint32_t> bitOperand(VMEngine* vm, int n);
