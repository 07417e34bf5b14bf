// Calls ALLTRIM through the host as the interpreter does; prints its result.
#include <kovo/host_calls.h>
#include <kovo/host_embed.h>
#include <kovo/host_items.h>

#include <cstdio>
#include <cstring>
#include <string>

extern "C" void ALLTRIM(VMEngine* vm);

namespace {

VMFunction resolve(VMEngine*, void*, const char* name) {
  return std::strcmp(name, "ALLTRIM") == 0 ? &ALLTRIM : nullptr;
}

}  // namespace

int main() {
  HostEvents events{};
  events.resolveFunction = &resolve;
  VMConfig config{&events, nullptr, false};
  VMEngine* vm = vmCreate(&config);
  Item* argument = itemPutC(vm, itemNew(vm, nullptr), "  kovo  ");
  Item* result = vmCallFunction(vm, xdynsymGet(vm, "ALLTRIM"), 1, &argument);
  std::printf("ALLTRIM: [%s]\n", std::string(itemStrPtr(result), itemStrLen(result)).c_str());
  xItemRelease(vm, argument);
  return vmDestroy(vm) == 0 ? 0 : 1;
}
