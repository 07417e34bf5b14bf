// The library's per-thread state, kept in the block that every context
// reserves for it (zero-filled when the context is created). Each family
// declares its own slot where it needs one:
//
//   struct TokenState { TokenEnv* env; int32_t sepBefore; int32_t sepAfter; };
//   const StateSlot<TokenState> tokenState(&releaseTokenState);
//   ... tokenState(vm).env ...
//
// A slot's cleanup runs when a context ends.
#pragma once

#include <cstddef>
#include <type_traits>

#include "kovo/vmengine.h"

using StateCleanup = void (*)(VMEngine*);

// Reserves `size` bytes aligned to `alignment` in the block and returns their
// offset; the cleanup (may be null) is remembered for the end of a context.
size_t stateReserve(size_t size, size_t alignment, StateCleanup cleanup);
// Runs every registered cleanup; the host calls it when a context ends.
void stateReleaseAll(VMEngine* vm);

template <typename T>
class StateSlot {
  static_assert(std::is_trivially_default_constructible_v<T> && std::is_standard_layout_v<T>,
                "a state slot is zero-filled memory: it must be a plain structure");

 public:
  explicit StateSlot(StateCleanup cleanup = nullptr)
      : offset_(stateReserve(sizeof(T), alignof(T), cleanup)) {}
  T& operator()(VMEngine* vm) const { return *reinterpret_cast<T*>(vm->libraryState + offset_); }

 private:
  size_t offset_;
};
