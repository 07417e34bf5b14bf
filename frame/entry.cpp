// The library's load-time entry.
#include "frame.h"
#include "os/module.h"
#include "state.h"

namespace {

void* moduleHandle = nullptr;

__attribute__((constructor)) void libraryAttach() {
  moduleHandle = osCurrentModule();
  hostSetLibraryFinalizer(&stateReleaseAll);
  initserverfunctions(0, 0, 0);
}

}  // namespace

void* libraryModule() {
  return moduleHandle;
}

// Exists only so that the class's copy assignment is exported; copies nothing.
VMEngine& VMEngine::operator=(const VMEngine&) {
  return *this;
}
