// Memory variables. Each symbol holds its visible variable; a private variable
// hides the one of the same name until the privates created after a mark are
// released. The debugger's view tells the running procedure's privates from
// those of its callers by where the procedure's privates begin.
#include <algorithm>

#include "internals.h"
#include "kovo/host.h"

namespace {

DynSymbol* symbolOfName(VMEngine* vm, const Item* name) {
  if (!name) return nullptr;
  if (name->type & HB_IT_SYMBOL) return name->item.asSymbol.value;
  if (name->type & HB_IT_STRING) return xdynsymGet(vm, name->item.asString.value);
  return nullptr;
}

uint32_t procedureBase(const HostInternals* internals) {
  return internals->procedureBases.empty() ? 0 : internals->procedureBases.back();
}

// The debugger's scope of the private entry at `index`.
int32_t privateScopeAt(const HostInternals* internals, size_t index) {
  return index >= procedureBase(internals) ? MV_DBG_PRIVATE_OWN : MV_DBG_PRIVATE_CALLER;
}

// Calls visit(cell, symbol) for each variable of a debugger scope, in creation
// order, until it returns true.
template <typename Visit>
void forEachInScope(VMEngine* vm, int32_t scope, Visit visit) {
  const HostInternals* internals = vm->internals;
  if (scope == MV_DBG_PUBLIC) {
    for (const PublicEntry& entry : internals->publics) {
      if (visit(entry.cell, entry.symbol)) return;
    }
    return;
  }
  if (scope != MV_DBG_PRIVATE_CALLER && scope != MV_DBG_PRIVATE_OWN && scope != MV_DBG_PRIVATE) {
    return;
  }
  const auto& privates = internals->privates;
  for (size_t i = 0; i < privates.size(); i++) {
    if ((privateScopeAt(internals, i) & scope) && visit(privates[i].cell, privates[i].symbol)) {
      return;
    }
  }
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
    vm->internals->publics.push_back({symbol, symbol->memvar});
    return;
  }
  ValueCell* cell = cellNew(vm, value);
  vm->internals->privates.push_back({symbol, cell, symbol->memvar, symbol->memvarScope});
  symbol->memvar = cell;
  symbol->memvarScope = MV_PRIVATE;
}

void memvarCreateFromItem(VMEngine* vm, const Item* name, int32_t scope, const Item* value) {
  memvarCreateFromDynSymbol(vm, symbolOfName(vm, name), scope, value);
}

int32_t memvarScope(VMEngine* vm, const char* name) {
  DynSymbol* symbol = xdynsymFind(vm, name);
  if (!symbol) return MV_DBG_NO_SYMBOL;
  if (!symbol->memvar) return MV_DBG_NO_VARIABLE;
  if (symbol->memvarScope == MV_PUBLIC) return MV_DBG_PUBLIC;
  const auto& privates = vm->internals->privates;
  for (size_t i = privates.size(); i-- > 0;) {
    if (privates[i].symbol == symbol) return privateScopeAt(vm->internals, i);
  }
  return MV_DBG_UNKNOWN;
}

void memvarRelease(VMEngine* vm, const Item* name) {
  DynSymbol* symbol = (name && (name->type & HB_IT_STRING))
                          ? xdynsymFind(vm, name->item.asString.value)
                          : symbolOfName(vm, name);
  if (symbol && symbol->memvar) itemClear(vm, &symbol->memvar->value);
}

void memvarReleaseWithMask(VMEngine* vm, const regex_t* expression, bool include) {
  auto& privates = vm->internals->privates;
  for (size_t i = procedureBase(vm->internals); i < privates.size(); i++) {
    bool matches = regexec(expression, privates[i].symbol->name, 0, nullptr, 0) == 0;
    if (matches == include) itemClear(vm, &privates[i].cell->value);
  }
}

void memvarClear(VMEngine* vm, DynSymbol* symbol) {
  if (!symbol) return;
  HostInternals* internals = vm->internals;
  auto& privates = internals->privates;
  for (size_t i = privates.size(); i-- > 0;) {
    if (privates[i].symbol != symbol) continue;
    cellRelease(privates[i].hidden);
    privates.erase(privates.begin() + static_cast<ptrdiff_t>(i));
    // The procedures that began above the entry now begin one lower.
    for (uint32_t& base : internals->procedureBases) {
      if (base > i) base--;
    }
  }
  std::erase_if(internals->publics,
                [symbol](const PublicEntry& entry) { return entry.symbol == symbol; });
  cellRelease(symbol->memvar);
  symbol->memvar = nullptr;
  symbol->memvarScope = MV_UNKNOWN;
}

int32_t memvarCount(VMEngine* vm, int32_t scope) {
  int32_t count = 0;
  forEachInScope(vm, scope, [&count](ValueCell*, DynSymbol*) {
    count++;
    return false;
  });
  return count;
}

Item* memvarDebugVariable(VMEngine* vm, int32_t scope, int32_t pos, const char** name) {
  Item* found = nullptr;
  const char* foundName = nullptr;
  int32_t seen = 0;
  forEachInScope(vm, scope, [&](ValueCell* cell, DynSymbol* symbol) {
    if (++seen != pos) return false;
    found = &cell->value;
    foundName = symbol->name;
    return true;
  });
  if (name) *name = foundName;
  return found;
}

uint32_t memvarPrivateMark(VMEngine* vm) {
  auto mark = static_cast<uint32_t>(vm->internals->privates.size());
  vm->internals->procedureBases.push_back(mark);
  return mark;
}

void memvarPrivateRestore(VMEngine* vm, uint32_t mark) {
  HostInternals* internals = vm->internals;
  // Clearing a caller's private moved the procedure's start below its mark.
  auto& bases = internals->procedureBases;
  if (!bases.empty()) {
    mark = std::min(mark, bases.back());
    bases.pop_back();
  }
  auto& privates = internals->privates;
  while (privates.size() > mark) {
    PrivateEntry entry = privates.back();
    privates.pop_back();
    cellRelease(entry.cell);
    entry.symbol->memvar = entry.hidden;
    entry.symbol->memvarScope = entry.hidden ? entry.hiddenScope : MV_UNKNOWN;
  }
}

void memvarReleaseAll(VMEngine* vm) {
  vm->internals->procedureBases.clear();
  memvarPrivateRestore(vm, 0);
  for (DynSymbol* symbol : vm->internals->symbolOrder)
    memvarClear(vm, symbol);
}
