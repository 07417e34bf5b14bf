// The per-thread context of the host VM, its evaluation stack and call frame.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kovo/export.h"
#include "kovo/item.h"
#include "kovo/settings.h"

// Slots added to the stack's slot array whenever a push finds none free.
inline constexpr uint32_t STACK_GROWTH = 20;
// Bytes of the per-thread block that belongs to the function library.
inline constexpr size_t LIBRARY_STATE_SIZE = 4096;

struct VMStack {
  Item** items;     // slot array; every slot points to its own item
  Item** pos;       // first free slot
  uint32_t wItems;  // slots allocated
  Item Return;      // the return item
  Item** pBase;     // base slot of the running call frame
  char szDate[9];   // "YYYYMMDD" of the last date read by paramGetDS
};

struct ErrorState {
  Item errorBlock;  // nil, or the block that handles errors of this thread
  int32_t dosError;
  uint32_t handlerDepth;  // how deep errors are being handled, to stop recursion
};

struct Heap;
struct HostEvents;
struct HostInternals;

struct KOVO_HOST_API VMEngine {
  VMStack stack;
  ErrorState error;
  // Scratch nil item for error reports that need an argument the caller did not supply.
  Item spareNil;
  SetBlock set;
  TextToolsSettings ct;
  alignas(16) unsigned char libraryState[LIBRARY_STATE_SIZE];
  Heap* heap;
  const HostEvents* events;
  void* eventCargo;
  // Build every call frame in the extended layout (stored count 256 + n).
  bool extendedFrames;
  HostInternals* internals;

  // Exported by the function library; copies nothing.
  VMEngine& operator=(const VMEngine&);
};

// Parameter count of the running frame. A stored count below 255 is the count;
// from 255 up the frame is extended and holds count - 256 parameters.
inline int vmParamCount(const VMEngine* vm) {
  uint16_t stored = (*vm->stack.pBase)->item.asSymbol.paramCount;
  if (stored < 255) return stored;
  return stored == 255 ? 0 : stored - 256;
}

// The slot of parameter n (1-based), unresolved; -1 is the return item; null
// when there is no such parameter. In an extended frame the parameters lie
// displaced by as many slots as there are parameters.
inline Item* vmParamSlot(VMEngine* vm, int n) {
  if (n == -1) return &vm->stack.Return;
  int count = vmParamCount(vm);
  if (n < 1 || n > count) return nullptr;
  uint16_t stored = (*vm->stack.pBase)->item.asSymbol.paramCount;
  int displacement = stored < 255 ? 0 : count;
  return vm->stack.pBase[1 + n + displacement];
}

using VMFunction = void (*)(VMEngine*);
