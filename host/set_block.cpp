// What the settings block holds beside its values: the set-change listeners,
// a list that SET walks before and after every change and that native code
// joins and leaves, and the open output files.
#include "internals.h"
#include "kovo/host_files.h"
#include "kovo/host_items.h"

void setListenerAdd(VMEngine* vm, SetListenerCallback callback) {
  auto* node = static_cast<SetListener*>(vmAlloc(vm, sizeof(SetListener)));
  node->callback = callback;
  SetListener** tail = &vm->set.listeners;
  while (*tail)
    tail = &(*tail)->next;
  *tail = node;
}

bool setListenerRemove(VMEngine* vm, SetListenerCallback callback) {
  for (SetListener** link = &vm->set.listeners; *link; link = &(*link)->next) {
    if ((*link)->callback == callback) {
      SetListener* node = *link;
      *link = node->next;
      vmFree(vm, node);
      return true;
    }
  }
  return false;
}

void setListenersRelease(VMEngine* vm) {
  while (vm->set.listeners) {
    SetListener* node = vm->set.listeners;
    vm->set.listeners = node->next;
    vmFree(vm, node);
  }
}

void setCloseOutputFiles(VMEngine* vm) {
  SetBlock& set = vm->set;
  for (int32_t* handle : {&set.altHandle, &set.extraHandle}) {
    if (*handle != FS_ERROR) close_text(vm, *handle);
    *handle = FS_ERROR;
  }
  if (set.printHandle != FS_ERROR) close_binary(vm, set.printHandle);
  set.printHandle = FS_ERROR;
}
