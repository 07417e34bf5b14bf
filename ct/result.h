// Result buffers of the text tools that may grow beyond what a string holds.
#pragma once

#include <cstdint>

#include "frame/frame.h"

// A buffer for a result of `length` bytes and the zero byte behind them, to be
// adopted by an item; null when the result would reach the string limit or
// the memory is not to be had.
inline char* ctTryResultBuffer(VMEngine* vm, uint64_t length) {
  if (length >= STRING_LENGTH_LIMIT) return nullptr;
  return static_cast<char*>(vmTryAlloc(vm, length + 1));
}
