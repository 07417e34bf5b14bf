// Runtime errors: creation, launch through the thread's error block, and the
// shorthand forms for argument errors of the base subsystem.
#pragma once

#include <cstdint>

#include "kovo/export.h"
#include "kovo/item.h"
#include "kovo/vmengine.h"

// General codes.
enum ErrorGenCode : int32_t {
  EG_ARG = 1,
  EG_BOUND = 2,
  EG_STROVERFLOW = 3,
  EG_NUMOVERFLOW = 4,
  EG_ZERODIV = 5,
  EG_NUMERR = 6,
  EG_SYNTAX = 7,
  EG_COMPLEXITY = 8,
  EG_MEM = 11,
  EG_NOFUNC = 12,
  EG_NOMETHOD = 13,
  EG_NOVAR = 14,
  EG_NOALIAS = 15,
  EG_NOVARMETHOD = 16,
  EG_CREATE = 20,
  EG_OPEN = 21,
  EG_CLOSE = 22,
  EG_READ = 23,
  EG_WRITE = 24,
  EG_PRINT = 25,
};

enum ErrorSeverity : int32_t {
  ES_WHOCARES = 0,
  ES_WARNING = 1,
  ES_ERROR = 2,
  ES_CATASTROPHIC = 3,
};

enum ErrorFlags : uint32_t {
  EF_NONE = 0,
  EF_CANRETRY = 1,
  EF_CANSUBSTITUTE = 2,
  EF_CANDEFAULT = 4,
};

// What the handler of an error asks for.
enum ErrorAction : uint16_t {
  E_DEFAULT = 0,
  E_RETRY = 1,
  E_BREAK = 0xFFFF,
};

inline constexpr const char* ERR_SS_BASE = "BASE";
inline constexpr const char* ERR_SS_TERM = "TERM";
inline constexpr const char* ERR_SS_DBCMD = "DBCMD";

// The standard English description of a general code, "" for codes without one.
KOVO_HOST_API const char* errDescription(int32_t genCode);

// A new error object (release with xItemRelease). A null or empty description
// is replaced by the standard text of the general code.
KOVO_HOST_API Item* err_RT_New(VMEngine* vm, int32_t severity, const char* subSystem,
                               int32_t genCode, int32_t subCode, const char* description,
                               const char* operation, int32_t osCode, uint32_t flags);
KOVO_HOST_API Item* err_RT_New_Subst(VMEngine* vm, int32_t severity, const char* subSystem,
                                     int32_t genCode, int32_t subCode, const char* description,
                                     const char* operation, int32_t osCode, uint32_t flags);
// Sets the ARGS instance variable from `argc` items; a null item stands for nil.
KOVO_HOST_API void errPutArgsArray(VMEngine* vm, Item* error, uint32_t argc, Item* const* argv);
// Raises the error and returns the handler's action.
KOVO_HOST_API uint16_t err_Launch(VMEngine* vm, Item* error);
// Raises the error and returns the substitute value (release with xItemRelease), or null.
KOVO_HOST_API Item* err_LaunchSubst(VMEngine* vm, Item* error);

// Argument errors of the base subsystem; the trailing items are the arguments.
// SubstR puts the substitute into the return item (nil when none comes back).
KOVO_HOST_API void err_RT_BASE_SubstR(VMEngine* vm, int32_t genCode, int32_t subCode,
                                      const char* description, const char* operation, uint32_t argc,
                                      ...);
KOVO_HOST_API Item* err_RT_BASE_Subst(VMEngine* vm, int32_t genCode, int32_t subCode,
                                      const char* description, const char* operation, uint32_t argc,
                                      ...);
KOVO_HOST_API uint16_t err_RT_BASE(VMEngine* vm, int32_t genCode, int32_t subCode,
                                   const char* description, const char* operation, uint32_t argc,
                                   ...);
KOVO_HOST_API uint16_t err_RT_BASE_Ext1(VMEngine* vm, int32_t genCode, int32_t subCode,
                                        const char* description, const char* operation,
                                        int32_t osCode, uint32_t flags, uint32_t argc, ...);
// Array forms of the above, for callers that gather their arguments first.
KOVO_HOST_API void err_RT_BASE_SubstRArgs(VMEngine* vm, int32_t genCode, int32_t subCode,
                                          const char* description, const char* operation,
                                          uint32_t argc, Item* const* argv);
KOVO_HOST_API Item* err_RT_BASE_SubstArgs(VMEngine* vm, int32_t genCode, int32_t subCode,
                                          const char* description, const char* operation,
                                          uint32_t argc, Item* const* argv);
KOVO_HOST_API uint16_t err_RT_BASEArgs(VMEngine* vm, int32_t genCode, int32_t subCode,
                                       const char* description, const char* operation,
                                       uint32_t argc, Item* const* argv);

KOVO_HOST_API uint16_t err_RT_TERM(VMEngine* vm, int32_t genCode, int32_t subCode,
                                   const char* description, const char* fileName, int32_t osCode,
                                   uint32_t flags);
KOVO_HOST_API uint16_t err_RT_DBCMD(VMEngine* vm, int32_t genCode, int32_t subCode,
                                    const char* description, const char* operation);
// An error of the host's own subsystem with the given code and texts, default allowed.
KOVO_HOST_API uint16_t errRaise(VMEngine* vm, int32_t code, const char* description,
                                const char* operation);
// An unrecoverable internal error: reported, then the program ends.
[[noreturn]] KOVO_HOST_API void err_Internal(VMEngine* vm, int32_t code, const char* text1,
                                             const char* text2);
