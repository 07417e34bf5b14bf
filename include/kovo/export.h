// Visibility of the shared objects. Both libraries are built with hidden
// visibility (on Windows: nothing is exported unless marked); only what is
// marked here is exported.
#pragma once

#if defined(_WIN32)
#define KOVO_EXPORT __declspec(dllexport)
// A function whose assembler name is set by hand: the compiler would export
// it under that name with the linker's own prefix added once more, so the
// DLL's definition file (frame/exports.def) names it instead.
#define KOVO_EXPORT_RENAMED
#else
#define KOVO_EXPORT __attribute__((visibility("default")))
#define KOVO_EXPORT_RENAMED KOVO_EXPORT
#endif
// Operations of the host VM layer, which the function library links against.
#define KOVO_HOST_API KOVO_EXPORT

// The assembler name of the C function named NAME (a string literal), with
// the target's own prefix of C names (an underscore on 32-bit Windows).
#define KOVO_LABEL_PREFIX_TEXT(PREFIX) #PREFIX
#define KOVO_LABEL_PREFIX(PREFIX) KOVO_LABEL_PREFIX_TEXT(PREFIX)
#define KOVO_ASM_NAME(NAME) __asm__(KOVO_LABEL_PREFIX(__USER_LABEL_PREFIX__) NAME)
