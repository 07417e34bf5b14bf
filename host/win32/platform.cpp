// The name and version of the operating system, as the Windows original
// reports it.
#include <windows.h>

#include "host/internals.h"
#include "kovo/host_misc.h"

char* verPlatform(VMEngine* vm) {
  OSVERSIONINFOA version{};
  version.dwOSVersionInfoSize = sizeof version;
  if (!GetVersionExA(&version)) return heapString(vm, "Windows");
  std::string text = "Windows NT " + std::to_string(version.dwMajorVersion) + "." +
                     std::to_string(version.dwMinorVersion) + " (Build " +
                     std::to_string(version.dwBuildNumber & 0xFFFF) + ")";
  if (version.szCSDVersion[0]) text += std::string(" ") + version.szCSDVersion;
  return heapString(vm, text);
}
