// The operating system's clocks: a high-resolution counter and the local
// wall-clock time, which a suitably privileged process may set.
#pragma once

#include <cstdint>

// The fields of the Windows SYSTEMTIME, in its order.
struct OsLocalTime {
  int year;
  int month;      // 1..12
  int dayOfWeek;  // 0 Sunday .. 6; ignored when the time is set
  int day;        // 1..31
  int hour;
  int minute;
  int second;
  int milliseconds;
};

// The counter's ticks and its ticks per second; false when it cannot be read.
bool osPerformanceCounter(int64_t* ticks);
bool osPerformanceFrequency(int64_t* ticksPerSecond);
void osGetLocalTime(OsLocalTime* time);
// False when the time is no valid one or the process may not set the clock.
bool osSetLocalTime(const OsLocalTime& time);
