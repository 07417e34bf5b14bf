// Version texts, the library entry, messages to the user and the calls that
// the host hands on to its embedder.
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "internals.h"
#include "kovo/host_embed.h"

namespace {

int attachedLibraries = 0;

}  // namespace

char* heapString(VMEngine* vm, const std::string& text) {
  auto* buffer = static_cast<char*>(vmAlloc(vm, text.size() + 1));
  std::memcpy(buffer, text.data(), text.size());
  return buffer;
}

int initserverfunctions(int, int, int) {
  return ++attachedLibraries;
}

char* verCompiler(VMEngine* vm) {
#if defined(__clang__)
  std::string compiler = "Clang C++ " __clang_version__;
#else
  std::string compiler = "GNU C++ " __VERSION__;
#endif
  return heapString(vm, compiler + " (" + std::to_string(sizeof(void*) * 8) + "-bit)");
}

char* verInterpreter(VMEngine* vm) {
  return heapString(vm, "Kovo 1.0.0 (Rev. 1)");
}

char* verPCode(VMEngine* vm) {
  return heapString(vm, "PCode version: 1.0");
}

// The library serves programs written for the NT family: long file names and
// the NT behaviour of the file layer.
int osIsWinNT() {
  return 1;
}

Item* gcGripGet(VMEngine* vm, const Item* item) {
  return itemNew(vm, item);
}

int MsgBox(VMEngine* vm, const char* text, const char* caption) {
  if (vm->events && vm->events->messageBox) {
    vm->events->messageBox(vm, vm->eventCargo, text ? text : "", caption);
  }
  return 1;
}

void kovo_report_error(VMEngine* vm, const char* text) {
  if (vm->events && vm->events->report) vm->events->report(vm, vm->eventCargo, text ? text : "");
}

const char* macroGetType(VMEngine* vm, const Item* expression, uint8_t flags) {
  if (!expression || !(expression->type & HB_IT_STRING)) return "U";
  if (!vm->events || !vm->events->macroType) return "U";
  return vm->events->macroType(vm, vm->eventCargo, expression->item.asString.value,
                               expression->item.asString.length, flags);
}

bool dynvmRunFile(VMEngine* vm, const char* path) {
  if (!vm->events || !vm->events->runFile || !path) return false;
  return vm->events->runFile(vm, vm->eventCargo, path);
}

char* dbgMakeStackCall(VMEngine* vm) {
  // Every slot that holds a called symbol is a frame; the innermost comes first.
  std::string text;
  for (Item** slot = vm->stack.pos; slot-- > vm->stack.items;) {
    const Item* item = *slot;
    if (item->type == HB_IT_SYMBOL && item->item.asSymbol.value &&
        item->item.asSymbol.stackBase == slot - vm->stack.items) {
      if (!text.empty()) text += "\r\n";
      text += std::string("Called from ") + item->item.asSymbol.value->name + "(0)";
    }
  }
  return heapString(vm, text);
}

Item* ExeDynFunction(VMEngine* vm, const char* name, uint32_t argc, ...) {
  GATHER_ITEMS(argv, argc);
  return vmCallFunction(vm, xdynsymGet(vm, name), argc, argv.data());
}
