// Dynamic symbols, calls into functions and script code, blocks, objects.
#pragma once

#include <cstdint>

#include "kovo/export.h"
#include "kovo/item.h"
#include "kovo/vmengine.h"

struct DynSymbol {
  char* name;           // upper case
  VMFunction function;  // null until the embedder resolves it
  ValueCell* memvar;    // the visible memory variable of this name, or null
  int32_t memvarScope;  // scope of that variable (MV_PUBLIC or MV_PRIVATE)
};

// Evaluates a block: argv holds argc arguments as passed (references kept);
// the value goes into `result`.
using BlockEval = void (*)(VMEngine* vm, Block* block, uint32_t argc, Item** argv, Item* result);
using BlockRelease = void (*)(Block* block);

struct Block {
  uint32_t refCount;
  BlockEval eval;
  BlockRelease release;  // frees `code` when the last reference goes
  void* code;
};

KOVO_HOST_API DynSymbol* xdynsymGet(VMEngine* vm, const char* name);
KOVO_HOST_API DynSymbol* xdynsymFind(VMEngine* vm, const char* name);
KOVO_HOST_API DynSymbol* xdynsymFindName(VMEngine* vm, const char* name);
// Calls `callback` for every dynamic symbol, in name order, until it returns false.
KOVO_HOST_API void xdynsymEval(VMEngine* vm, bool (*callback)(VMEngine*, DynSymbol*, void*),
                               void* cargo);
// An xdynsymEval callback: appends the name of a symbol that holds a memory
// variable to the array item `cargo`.
KOVO_HOST_API bool GetSymbolInfo(VMEngine* vm, DynSymbol* symbol, void* cargo);
KOVO_HOST_API DynSymbol* xdynsymFindFromFunction(VMEngine* vm, VMFunction function);

// The stack. A push leaves the new top item nil and returns it. The pushes
// are inline, as the interpreter makes several at every call; only growing
// the slot array is a call.
KOVO_HOST_API void vmGrowStack(VMEngine* vm);
inline Item* vmPush(VMEngine* vm) {
  VMStack& stack = vm->stack;
  if (stack.pos == stack.items + stack.wItems) [[unlikely]]
    vmGrowStack(vm);
  // Free slots are always nil: every pop clears the slot it frees.
  return *stack.pos++;
}
inline void vmPushNil(VMEngine* vm) {
  vmPush(vm);
}
// A symbol item records its own stack position, taken before the push so
// that the pushes of a call keep the top in a register.
inline void vmPushSymbol(VMEngine* vm, DynSymbol* symbol) {
  auto position = static_cast<int32_t>(vm->stack.pos - vm->stack.items);
  Item* item = vmPush(vm);
  item->type = HB_IT_SYMBOL;
  item->item.asSymbol.value = symbol;
  item->item.asSymbol.stackBase = position;
  item->item.asSymbol.paramCount = 0;
}
KOVO_HOST_API void itemPushForward(VMEngine* vm, Item* item);
// Removes `count` items from the top, releasing their values.
KOVO_HOST_API void vmPop(VMEngine* vm, uint32_t count);
// Calls the symbol pushed below the self item and `count` parameters; the result
// is left in the return item. With an object as self the call is a message send.
KOVO_HOST_API void xvmDo(VMEngine* vm, uint16_t count);
KOVO_HOST_API void xvmSend(VMEngine* vm, uint16_t count);
KOVO_HOST_API void xvmFunction(VMEngine* vm, uint16_t count);

KOVO_HOST_API Block* blockNew(VMEngine* vm, BlockEval eval, BlockRelease release, void* code);
// The item takes over one reference to the block.
KOVO_HOST_API Item* itemPutBlock(VMEngine* vm, Item* dst, Block* block);
// Evaluates a block item with the given arguments; the value is left in the
// return item, which is returned.
KOVO_HOST_API Item* vmEvalBlockV(VMEngine* vm, const Item* block, uint32_t argc, ...);
KOVO_HOST_API Item* vmEvalBlockArgs(VMEngine* vm, const Item* block, uint32_t argc, Item** argv);
// The same, returning a new item to be released with xItemRelease.
KOVO_HOST_API Item* itemDo(VMEngine* vm, const Item* block, uint32_t argc, ...);

// Sends a message by name; a name that begins with "_" assigns the instance
// variable named by the rest. The value is left in the return item, which is returned.
KOVO_HOST_API Item* xobjSendMsg(VMEngine* vm, Item* object, const char* message, uint32_t argc,
                                ...);
KOVO_HOST_API bool xobjHasMsg(VMEngine* vm, const Item* object, const char* message);
KOVO_HOST_API const char* xobjGetClsName(const Item* object);
// The instance variable of that name itself, or null; touches no stack.
KOVO_HOST_API Item* xobjIvarPtr(const Item* object, const char* name);
// A new error object with its instance variables at their starting values.
KOVO_HOST_API Item* errNew(VMEngine* vm);

// Type letters of an expression text, as the TYPE function reports them.
KOVO_HOST_API const char* macroGetType(VMEngine* vm, const Item* expression, uint8_t flags);
// A heap text describing the current call stack.
KOVO_HOST_API char* dbgMakeStackCall(VMEngine* vm);
// Runs a script file of the embedder's language; false when it could not run.
KOVO_HOST_API bool dynvmRunFile(VMEngine* vm, const char* path);
// Calls a function by name with `argc` items; the value is left in the return item.
KOVO_HOST_API Item* ExeDynFunction(VMEngine* vm, const char* name, uint32_t argc, ...);
