// Creation and end of a context, with the starting values of its settings.
#include <cstring>
#include <new>

#include "file_context.h"
#include "heap.h"
#include "internals.h"
#include "kovo/host_embed.h"

namespace {

void (*libraryFinalizer)(VMEngine*) = nullptr;

struct TextDefault {
  int number;
  const char* text;
};

const TextDefault TEXT_DEFAULTS[] = {
    {HB_SET_DATEFORMAT, "mm/dd/yy"},
    {HB_SET_COLOR, "W/N,N/W,N/N,N/N,N/W"},
    {HB_SET_DEVICE, "SCREEN"},
    {HB_SET_DELIMCHARS, "::"},
};

struct ValueDefault {
  int number;
  int32_t value;
};

const ValueDefault VALUE_DEFAULTS[] = {
    {HB_SET_DECIMALS, 2},    {HB_SET_EPOCH, 1900},    {HB_SET_EXCLUSIVE, 1},
    {HB_SET_CANCEL, 1},      {HB_SET_TYPEAHEAD, 50},  {HB_SET_CURSOR, 1},
    {HB_SET_CONSOLE, 1},     {HB_SET_ESCAPE, 1},      {HB_SET_INTENSITY, 1},
    {HB_SET_SCOREBOARD, 1},  {HB_SET_SCROLLBREAK, 1}, {HB_SET_EVENTMASK, 128},
    {HB_SET_MBLOCKSIZE, 64}, {HB_SET_OPTIMIZE, 1},    {HB_SET_AUTOPEN, 1},
    {HB_SET_ERRORLOOP, 8},   {HB_SET_EXT119, 1},
};

char* heapCopy(VMEngine* vm, const char* text) {
  size_t length = std::strlen(text);
  auto* copy = static_cast<char*>(vmAlloc(vm, length + 1));
  std::memcpy(copy, text, length);
  return copy;
}

void initSettings(VMEngine* vm) {
  SetBlock& set = vm->set;
  for (const ValueDefault& entry : VALUE_DEFAULTS)
    set.value[entry.number] = entry.value;
  for (const TextDefault& entry : TEXT_DEFAULTS)
    set.text[entry.number] = heapCopy(vm, entry.text);
  set.char107 = ' ';
  set.altHandle = set.extraHandle = set.printHandle = -1;
  vm->ct.atLikeChar = '?';
}

void releaseSettings(VMEngine* vm) {
  for (char*& text : vm->set.text) {
    vmFree(vm, text);
    text = nullptr;
  }
  itemClear(vm, &vm->set.eol118);
  setListenersRelease(vm);
}

void initStack(VMEngine* vm) {
  VMStack& stack = vm->stack;
  stack.items = nullptr;
  stack.wItems = 0;
  stack.pos = nullptr;
  // The bottom frame: a symbol item with no parameters, so that parameter
  // access outside any call finds an empty frame.
  Item* bottom = vmPush(vm);
  bottom->type = HB_IT_SYMBOL;
  stack.pBase = stack.items;
  vmPushNil(vm);
}

void releaseStack(VMEngine* vm) {
  VMStack& stack = vm->stack;
  for (uint32_t i = 0; i < stack.wItems; i++) {
    itemClear(vm, stack.items[i]);
    vmFree(vm, stack.items[i]);
  }
  vmFree(vm, stack.items);
  itemClear(vm, &stack.Return);
}

}  // namespace

void hostSetLibraryFinalizer(void (*finalizer)(VMEngine*)) {
  libraryFinalizer = finalizer;
}

VMEngine* vmCreate(const VMConfig* config) {
  auto* vm = static_cast<VMEngine*>(::operator new(sizeof(VMEngine)));
  std::memset(static_cast<void*>(vm), 0, sizeof(VMEngine));
  vm->heap = new Heap{};
  vm->internals = new HostInternals{};
  vm->internals->codePage = cdpFind("CP1251");
  vm->internals->language = defaultLanguage();
  if (config) {
    vm->events = config->events;
    vm->eventCargo = config->cargo;
    vm->extendedFrames = config->extendedFrames;
  }
  initSettings(vm);
  initStack(vm);
  return vm;
}

size_t vmDestroy(VMEngine* vm) {
  if (libraryFinalizer) libraryFinalizer(vm);
  setCloseOutputFiles(vm);
  releaseFileContext(vm);
  memvarReleaseAll(vm);
  releaseSymbolTable(vm);
  itemClear(vm, &vm->error.errorBlock);
  itemClear(vm, &vm->spareNil);
  itemClear(vm, &vm->ct.nilItem);
  releaseSettings(vm);
  releaseStack(vm);
  size_t leaked = vm->heap->liveBlocks;
  heapReleaseKept(vm->heap);
  delete vm->internals;
  delete vm->heap;
  ::operator delete(vm);
  return leaked;
}

size_t vmHeapLiveBlocks(const VMEngine* vm) {
  return vm->heap->liveBlocks;
}
