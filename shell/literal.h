// The literal form in which the shell prints values.
#pragma once

#include <string>

#include "kovo/item.h"

// Python's repr() of a double, except NaN, Inf and -Inf.
std::string formatDouble(double value);
std::string formatString(const char* bytes, size_t length);
std::string formatText(const char* text);  // a zero-terminated text
std::string formatLiteral(const Item* item);
