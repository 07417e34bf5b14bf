// The clock as the host reads it: the local time of day and the process's
// CPU time.
#include <windows.h>

#include "kovo/host_text.h"

namespace {

// A FILETIME span (100-nanosecond units) in seconds.
double fileTimeSeconds(const FILETIME& time) {
  ULARGE_INTEGER value;
  value.LowPart = time.dwLowDateTime;
  value.HighPart = time.dwHighDateTime;
  return static_cast<double>(value.QuadPart) / 1e7;
}

}  // namespace

double dateSeconds() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  return now.wHour * 3600.0 + now.wMinute * 60.0 + now.wSecond + now.wMilliseconds / 1e3;
}

double secondsCPU(int mode) {
  FILETIME creation, exit, kernel, user;
  if (!GetProcessTimes(GetCurrentProcess(), &creation, &exit, &kernel, &user)) return 0;
  // Any mode but 1 and 2 asks for both times.
  switch (mode) {
    case 1:
      return fileTimeSeconds(user);
    case 2:
      return fileTimeSeconds(kernel);
    default:
      return fileTimeSeconds(user) + fileTimeSeconds(kernel);
  }
}
