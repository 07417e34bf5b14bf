// The reference-mode rule of the text-tools functions that change their
// first parameter.
#pragma once

#include <cstdint>

#include "frame/frame.h"

// Puts the changed text (a buffer of vmAlloc with room for its zero byte,
// adopted here). A parameter 1 passed by reference receives it; the result
// is then logical false when reference mode is on, else the text itself.
inline void ctReturnChanged(VMEngine* vm, char* text, uint32_t length) {
  if (!paramIsByRef(vm, 1)) {
    itemPutCPtr(vm, returnItem(vm), text, length);
  } else if (vm->ct.refMode) {
    hb_storclenAdopt(vm, text, length, 1);
    itemPutL(vm, returnItem(vm), false);
  } else {
    hb_storclen(vm, text, length, 1);
    itemPutCPtr(vm, returnItem(vm), text, length);
  }
}
