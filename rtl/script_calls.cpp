// MAKESTACKCALL and RUNHRBFILE: the call stack and script files, through the host.
#include <cstring>

#include "frame/frame.h"

KOVO_FUNC(MAKESTACKCALL) {
  char* text = dbgMakeStackCall(vm);
  itemPutCPtr(vm, returnItem(vm), text, static_cast<uint32_t>(std::strlen(text)));
}

// Runs the file and returns whether it ran. Further parameters are not handed
// on: the file sees the caller's memory variables instead.
KOVO_FUNC(RUNHRBFILE) {
  const char* path = paramPChar(vm, 1);
  itemPutL(vm, returnItem(vm), path != nullptr && dynvmRunFile(vm, path));
}
