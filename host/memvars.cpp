// Memory variables. Each symbol holds its visible variable; a private variable
// hides the one of the same name until the privates created after a mark are
// released.
#include "internals.h"
#include "kovo/host.h"

namespace {

DynSymbol* symbolOfName(VMEngine* vm, const Item* name) {
  if (!name) return nullptr;
  if (name->type & HB_IT_SYMBOL) return name->item.asSymbol.value;
  if (name->type & HB_IT_STRING) return xdynsymGet(vm, name->item.asString.value);
  return nullptr;
}

}  // namespace

DynSymbol* memvarFindSymbol(VMEngine* vm, const char* name) {
  DynSymbol* symbol = xdynsymFind(vm, name);
  return symbol && symbol->memvar ? symbol : nullptr;
}

bool memvarGetValue(VMEngine* vm, Item* dst, DynSymbol* symbol) {
  if (!symbol || !symbol->memvar) return false;
  itemCopy(vm, dst, &symbol->memvar->value);
  return true;
}

ValueCell* memvarGetCell(VMEngine*, DynSymbol* symbol) {
  return symbol ? symbol->memvar : nullptr;
}

bool memvarSetValue(VMEngine* vm, DynSymbol* symbol, const Item* value) {
  if (!symbol || !symbol->memvar) return false;
  if (value) {
    itemCopy(vm, &symbol->memvar->value, value);
  } else {
    itemClear(vm, &symbol->memvar->value);
  }
  return true;
}

void memvarCreateFromDynSymbol(VMEngine* vm, DynSymbol* symbol, int32_t scope, const Item* value) {
  if (!symbol) return;
  if (scope == MV_PUBLIC) {
    if (symbol->memvar) return;
    // A new public variable starts as false, as the language has it.
    Item initial{};
    if (!value) value = itemPutL(vm, &initial, false);
    symbol->memvar = cellNew(vm, value);
    symbol->memvarScope = MV_PUBLIC;
    return;
  }
  vm->internals->privates.push_back({symbol, symbol->memvar, symbol->memvarScope});
  symbol->memvar = cellNew(vm, value);
  symbol->memvarScope = MV_PRIVATE;
}

void memvarCreateFromItem(VMEngine* vm, const Item* name, int32_t scope, const Item* value) {
  memvarCreateFromDynSymbol(vm, symbolOfName(vm, name), scope, value);
}

int32_t memvarScope(VMEngine* vm, const char* name) {
  DynSymbol* symbol = memvarFindSymbol(vm, name);
  return symbol ? symbol->memvarScope : MV_UNKNOWN;
}

void memvarRelease(VMEngine* vm, const Item* name) {
  DynSymbol* symbol = (name && (name->type & HB_IT_STRING))
                          ? xdynsymFind(vm, name->item.asString.value)
                          : symbolOfName(vm, name);
  if (symbol && symbol->memvar) itemClear(vm, &symbol->memvar->value);
}

void memvarReleaseWithMask(VMEngine* vm, const regex_t* expression, bool include) {
  for (const PrivateEntry& entry : vm->internals->privates) {
    DynSymbol* symbol = entry.symbol;
    if (symbol->memvarScope != MV_PRIVATE || !symbol->memvar) continue;
    bool matches = regexec(expression, symbol->name, 0, nullptr, 0) == 0;
    if (matches == include) itemClear(vm, &symbol->memvar->value);
  }
}

void memvarClear(VMEngine* vm, DynSymbol* symbol) {
  if (!symbol) return;
  auto& privates = vm->internals->privates;
  for (auto entry = privates.begin(); entry != privates.end();) {
    if (entry->symbol == symbol) {
      cellRelease(entry->hidden);
      entry = privates.erase(entry);
    } else {
      ++entry;
    }
  }
  cellRelease(symbol->memvar);
  symbol->memvar = nullptr;
  symbol->memvarScope = MV_UNKNOWN;
}

int32_t memvarCount(VMEngine* vm, int32_t scope) {
  int32_t count = 0;
  for (DynSymbol* symbol : vm->internals->symbolOrder) {
    if (symbol->memvar && symbol->memvarScope == scope) count++;
  }
  return count;
}

Item* memvarDebugVariable(VMEngine* vm, int32_t scope, int32_t pos, const char** name) {
  int32_t seen = 0;
  for (DynSymbol* symbol : vm->internals->symbolOrder) {
    if (symbol->memvar && symbol->memvarScope == scope && ++seen == pos) {
      if (name) *name = symbol->name;
      return &symbol->memvar->value;
    }
  }
  if (name) *name = nullptr;
  return nullptr;
}

uint32_t memvarPrivateMark(VMEngine* vm) {
  return static_cast<uint32_t>(vm->internals->privates.size());
}

void memvarPrivateRestore(VMEngine* vm, uint32_t mark) {
  auto& privates = vm->internals->privates;
  while (privates.size() > mark) {
    PrivateEntry entry = privates.back();
    privates.pop_back();
    cellRelease(entry.symbol->memvar);
    entry.symbol->memvar = entry.hidden;
    entry.symbol->memvarScope = entry.hidden ? entry.hiddenScope : MV_UNKNOWN;
  }
}

void memvarReleaseAll(VMEngine* vm) {
  memvarPrivateRestore(vm, 0);
  for (DynSymbol* symbol : vm->internals->symbolOrder)
    memvarClear(vm, symbol);
}
