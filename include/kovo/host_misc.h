// Version texts, messages to the user, held items and the library entry.
#pragma once

#include <cstdint>

#include "kovo/export.h"
#include "kovo/item.h"
#include "kovo/vmengine.h"

// The library calls this once when it is loaded.
KOVO_HOST_API int initserverfunctions(int, int, int);
// The function library's cleanup of its per-thread block, run when a context ends.
KOVO_HOST_API void hostSetLibraryFinalizer(void (*finalizer)(VMEngine*));

// Heap texts that the caller owns (an item may adopt them).
KOVO_HOST_API char* verPlatform(VMEngine* vm);
KOVO_HOST_API char* verCompiler(VMEngine* vm);
KOVO_HOST_API char* verInterpreter(VMEngine* vm);
KOVO_HOST_API char* verPCode(VMEngine* vm);
KOVO_HOST_API int osIsWinNT();

// An item kept alive for the caller until released with xItemRelease.
KOVO_HOST_API Item* gcGripGet(VMEngine* vm, const Item* item);

KOVO_HOST_API int MsgBox(VMEngine* vm, const char* text, const char* caption);
// Reports a facility that the library does not serve.
KOVO_HOST_API void kovo_report_error(VMEngine* vm, const char* text);
