#include "state.h"

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

struct Registry {
  size_t used = 0;
  std::vector<StateCleanup> cleanups;
};

Registry& registry() {
  static Registry instance;
  return instance;
}

}  // namespace

size_t stateReserve(size_t size, size_t alignment, StateCleanup cleanup) {
  Registry& reg = registry();
  size_t offset = (reg.used + alignment - 1) / alignment * alignment;
  if (alignment > 16 || offset + size > LIBRARY_STATE_SIZE) {
    std::fprintf(stderr, "kovovmf: the per-thread state does not fit its block\n");
    std::abort();
  }
  reg.used = offset + size;
  if (cleanup) reg.cleanups.push_back(cleanup);
  return offset;
}

void stateReleaseAll(VMEngine* vm) {
  for (StateCleanup cleanup : registry().cleanups)
    cleanup(vm);
}
