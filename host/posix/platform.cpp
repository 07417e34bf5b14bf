// The name and release of the operating system.
#include <sys/utsname.h>

#include "host/internals.h"
#include "kovo/host_misc.h"

char* verPlatform(VMEngine* vm) {
  utsname name;
  if (uname(&name) != 0) return heapString(vm, "Linux");
  return heapString(vm, std::string(name.sysname) + " " + name.release);
}
