// What a program that embeds the host VM (the shell, the tests) uses to create
// contexts, call functions and hear what the VM reports.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kovo/export.h"
#include "kovo/host.h"

// Each event receives the context and the cargo of its configuration.
struct HostEvents {
  // An error was launched while no error block is installed; the default action follows.
  void (*unhandledError)(VMEngine* vm, void* cargo, const Item* error);
  // A library function was left by the readers' array exception.
  void (*exception)(VMEngine* vm, void* cargo, const char* text);
  void (*messageBox)(VMEngine* vm, void* cargo, const char* text, const char* caption);
  void (*report)(VMEngine* vm, void* cargo, const char* text);
  // An unrecoverable internal error; must not return.
  void (*internalError)(VMEngine* vm, void* cargo, int32_t code, const char* text1,
                        const char* text2);
  // Type letters of an expression text; a constant text.
  const char* (*macroType)(VMEngine* vm, void* cargo, const char* text, uint32_t length,
                           uint8_t flags);
  // The function of a name, or null when there is none.
  VMFunction (*resolveFunction)(VMEngine* vm, void* cargo, const char* name);
  bool (*runFile)(VMEngine* vm, void* cargo, const char* path);
};

struct VMConfig {
  const HostEvents* events;  // may be null: then nothing is reported
  void* cargo;
  bool extendedFrames;
};

KOVO_HOST_API VMEngine* vmCreate(const VMConfig* config);
// Ends a context; returns the number of heap blocks that were still allocated
// once everything it held was released (0 unless something leaked).
KOVO_HOST_API size_t vmDestroy(VMEngine* vm);
KOVO_HOST_API size_t vmHeapLiveBlocks(const VMEngine* vm);

// Calls a function with the items given, as the interpreter does: symbol, nil
// self, arguments, call. The value is left in the return item, which is returned.
KOVO_HOST_API Item* vmCallFunction(VMEngine* vm, DynSymbol* symbol, uint32_t argc, Item** argv);
