// Dynamic symbols: one per name and context, created on first use. Names are
// kept in upper case, as the language does not tell cases apart.
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "internals.h"
#include "kovo/host.h"
#include "kovo/host_embed.h"

namespace {

std::string upperName(const char* name) {
  std::string upper(name ? name : "");
  for (char& c : upper)
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return upper;
}

}  // namespace

DynSymbol* xdynsymFind(VMEngine* vm, const char* name) {
  auto& symbols = vm->internals->symbols;
  auto found = symbols.find(upperName(name));
  return found == symbols.end() ? nullptr : found->second.get();
}

DynSymbol* xdynsymFindName(VMEngine* vm, const char* name) {
  return xdynsymFind(vm, name);
}

DynSymbol* xdynsymGet(VMEngine* vm, const char* name) {
  std::string key = upperName(name);
  auto& symbols = vm->internals->symbols;
  auto found = symbols.find(key);
  if (found != symbols.end()) return found->second.get();
  auto symbol = std::make_unique<DynSymbol>();
  symbol->name = static_cast<char*>(std::calloc(key.size() + 1, 1));
  std::memcpy(symbol->name, key.data(), key.size());
  if (vm->events && vm->events->resolveFunction) {
    symbol->function = vm->events->resolveFunction(vm, vm->eventCargo, symbol->name);
  }
  DynSymbol* created = symbol.get();
  symbols.emplace(std::move(key), std::move(symbol));
  vm->internals->symbolOrder.push_back(created);
  return created;
}

void xdynsymEval(VMEngine* vm, bool (*callback)(VMEngine*, DynSymbol*, void*), void* cargo) {
  // Symbols are visited in name order, so that what a walk writes (a ".mem"
  // file) comes out the same whatever order the names were met in. A callback
  // may create symbols: the walk goes over the ones that existed when it began.
  std::vector<DynSymbol*> byName = vm->internals->symbolOrder;
  std::sort(byName.begin(), byName.end(), [](const DynSymbol* a, const DynSymbol* b) {
    return std::strcmp(a->name, b->name) < 0;
  });
  for (DynSymbol* symbol : byName) {
    if (!callback(vm, symbol, cargo)) break;
  }
}

bool GetSymbolInfo(VMEngine* vm, DynSymbol* symbol, void* cargo) {
  if (symbol->memvar) {
    Item name{};
    itemPutC(vm, &name, symbol->name);
    arrayAddForward(vm, static_cast<Item*>(cargo), &name);
  }
  return true;
}

DynSymbol* xdynsymFindFromFunction(VMEngine* vm, VMFunction function) {
  for (DynSymbol* symbol : vm->internals->symbolOrder) {
    if (symbol->function == function) return symbol;
  }
  return nullptr;
}

void releaseSymbolTable(VMEngine* vm) {
  for (DynSymbol* symbol : vm->internals->symbolOrder)
    std::free(symbol->name);
  vm->internals->symbolOrder.clear();
  vm->internals->symbols.clear();
}
