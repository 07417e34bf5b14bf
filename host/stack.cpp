// The evaluation stack and the call of functions through a frame.
#include <utility>

#include "heap.h"
#include "internals.h"
#include "kovo/host_embed.h"

// Kept out of line: the push that needs it is rare, the others must stay cheap.
void vmGrowStack(VMEngine* vm) {
  VMStack& stack = vm->stack;
  ptrdiff_t top = stack.pos - stack.items;
  ptrdiff_t base = stack.pBase - stack.items;
  uint32_t grown = stack.wItems + STACK_GROWTH;
  stack.items = static_cast<Item**>(vmRealloc(vm, stack.items, grown * sizeof(Item*)));
  for (uint32_t i = stack.wItems; i < grown; i++) {
    stack.items[i] = static_cast<Item*>(vmAlloc(vm, sizeof(Item)));
  }
  stack.wItems = grown;
  stack.pos = stack.items + top;
  stack.pBase = stack.items + base;
}

namespace {

// Releasing a value runs no script code, so nothing pushes while this pops.
[[gnu::noinline]] void popReleasing(VMEngine* vm, Item** base) {
  VMStack& stack = vm->stack;
  while (stack.pos > base)
    clearItem(*--stack.pos);
}

// Frames mostly hold values with nothing to release: their loop makes no
// call, so the caller keeps few registers to save.
inline void popTo(VMEngine* vm, ptrdiff_t frameBase) {
  VMStack& stack = vm->stack;
  Item** base = stack.items + frameBase;
  Item** top = stack.pos;
  while (top > base) {
    Item* item = *--top;
    if (holdsPayload(item)) [[unlikely]] {
      stack.pos = top + 1;
      return popReleasing(vm, base);
    }
    item->type = HB_IT_NIL;
  }
  stack.pos = top;
}

// In the extended layout the parameters lie displaced by as many slots as
// there are of them: the gap is filled with nil items.
[[gnu::noinline]] void extendFrame(VMEngine* vm, ptrdiff_t frameBase, uint16_t count) {
  for (uint16_t i = 0; i < count; i++)
    vmPushNil(vm);
  Item** params = vm->stack.items + frameBase + 2;
  for (uint16_t i = 0; i < count; i++)
    std::swap(params[i], params[count + i]);
}

bool isObject(const Item* item) {
  return (item->type & HB_IT_ARRAY) && item->item.asArray.value->cls != nullptr;
}

[[gnu::noinline, gnu::cold]] void raiseNoFunction(VMEngine* vm, const DynSymbol* symbol) {
  Item* error = err_RT_New(vm, ES_ERROR, ERR_SS_BASE, EG_NOFUNC, 1001, nullptr,
                           symbol ? symbol->name : "", 0, EF_CANDEFAULT);
  err_Launch(vm, error);
  xItemRelease(vm, error);
}

// The host's last line against a library function that throws: the call
// ends with a nil result and the embedder hears of it.
[[gnu::noinline, gnu::cold]] void reportException(VMEngine* vm, const char* text) {
  itemClear(vm, &vm->stack.Return);
  if (vm->events && vm->events->exception) vm->events->exception(vm, vm->eventCargo, text);
}

// A library function's call; what it throws ends at the host.
inline void callGuarded(VMEngine* vm, VMFunction function) {
  try {
    function(vm);
  } catch (const char* text) {
    reportException(vm, text);
  }
}

// Everything but a plain call of a known function: an extended frame, a
// message to an object, a symbol without a function. Out of line, so that
// the plain call keeps few registers to save.
[[gnu::noinline]] void runSpecialFrame(VMEngine* vm, ptrdiff_t frameBase, uint16_t count,
                                       bool send) {
  VMStack& stack = vm->stack;
  uint16_t stored = count;
  if (vm->extendedFrames) {
    extendFrame(vm, frameBase, count);
    stored = static_cast<uint16_t>(256 + count);
  }
  Item* symbolItem = stack.items[frameBase];
  symbolItem->item.asSymbol.paramCount = stored;
  DynSymbol* symbol = symbolItem->item.asSymbol.value;
  Item* self = stack.items[frameBase + 1];
  if (send || isObject(self)) {
    objectSend(vm, self, symbol ? symbol->name : "", count);
  } else if (symbol && symbol->function) {
    callGuarded(vm, symbol->function);
  } else {
    raiseNoFunction(vm, symbol);
  }
}

void runFrame(VMEngine* vm, uint16_t count, bool send);

// The return item still holds the previous call's value; let go of it out of
// line, so that the frame keeps few registers to save.
[[gnu::noinline]] void releaseReturnAndRun(VMEngine* vm, uint16_t count, bool send) {
  clearItem(&vm->stack.Return);
  runFrame(vm, count, send);
}

// Runs the frame whose symbol lies `count` + 2 slots below the top. Positions
// are kept as offsets: the call may grow, and so move, the slot array. What
// the frame holds is read before anything is stored, so that the loads are
// under way together.
void runFrame(VMEngine* vm, uint16_t count, bool send) {
  VMStack& stack = vm->stack;
  if (holdsPayload(&stack.Return)) [[unlikely]]
    return releaseReturnAndRun(vm, count, send);
  Item** frame = stack.pos - count - 2;
  Item* symbolItem = frame[0];
  const Item* self = frame[1];
  DynSymbol* symbol = symbolItem->item.asSymbol.value;
  VMFunction function = symbol ? symbol->function : nullptr;
  bool plain = function && !send && !vm->extendedFrames && !(self->type & HB_IT_ARRAY);
  ptrdiff_t frameBase = frame - stack.items;
  ptrdiff_t callerBase = stack.pBase - stack.items;
  stack.pBase = frame;
  symbolItem->item.asSymbol.paramCount = count;
  symbolItem->item.asSymbol.stackBase = static_cast<int32_t>(frameBase);
  stack.Return.type = HB_IT_NIL;
  if (plain) [[likely]] {
    callGuarded(vm, function);
  } else {
    runSpecialFrame(vm, frameBase, count, send);
  }
  popTo(vm, frameBase);
  stack.pBase = stack.items + callerBase;
}

}  // namespace

void itemPushForward(VMEngine* vm, Item* item) {
  itemForwardValue(vm, vmPush(vm), item);
}

void vmPop(VMEngine* vm, uint32_t count) {
  popTo(vm, vm->stack.pos - vm->stack.items - count);
}

void xvmDo(VMEngine* vm, uint16_t count) {
  runFrame(vm, count, false);
}

void xvmSend(VMEngine* vm, uint16_t count) {
  runFrame(vm, count, true);
}

void xvmFunction(VMEngine* vm, uint16_t count) {
  runFrame(vm, count, false);
}

Item* vmCallFunction(VMEngine* vm, DynSymbol* symbol, uint32_t argc, Item** argv) {
  vmPushSymbol(vm, symbol);
  vmPushNil(vm);
  for (uint32_t i = 0; i < argc; i++)
    itemCopy(vm, vmPush(vm), argv[i]);
  xvmDo(vm, static_cast<uint16_t>(argc));
  return &vm->stack.Return;
}
