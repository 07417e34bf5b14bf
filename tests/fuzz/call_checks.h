// The host's invariants after a call, as the call fuzzer and the thread test
// check them: the stack is back at its height, and every item a program can
// still reach (the return item, the arguments, the variables passed by
// reference) is a valid item whose blocks are alive. A broken invariant is
// reported with the function's name and ends the process.
#pragma once

#include <cstddef>

#include "kovo/host.h"

struct StackMark {
  ptrdiff_t top;
  ptrdiff_t base;
};

StackMark markStack(const VMEngine* vm);
void checkStack(const VMEngine* vm, const StackMark& mark, const char* function);
// Drops whatever frames lie above the mark, as the host does when an
// unrecoverable error ends the program.
void unwindStack(VMEngine* vm, const StackMark& mark);
void checkItem(const Item* item, const char* function);
void checkCell(const ValueCell* cell, const char* function);
