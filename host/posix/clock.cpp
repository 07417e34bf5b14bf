// The clock as the host reads it: the time of day and the process's CPU time.
#include <sys/resource.h>
#include <sys/time.h>

#include <ctime>

#include "kovo/host_text.h"

double dateSeconds() {
  timeval now;
  gettimeofday(&now, nullptr);
  time_t seconds = now.tv_sec;
  tm local;
  localtime_r(&seconds, &local);
  return local.tm_hour * 3600.0 + local.tm_min * 60.0 + local.tm_sec + now.tv_usec / 1e6;
}

double secondsCPU(int mode) {
  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  double user = usage.ru_utime.tv_sec + usage.ru_utime.tv_usec / 1e6;
  double system = usage.ru_stime.tv_sec + usage.ru_stime.tv_usec / 1e6;
  // Any mode but 1 and 2 asks for both times.
  switch (mode) {
    case 1:
      return user;
    case 2:
      return system;
    default:
      return user + system;
  }
}
