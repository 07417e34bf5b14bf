#include "os/clock.h"

#include <sys/time.h>

#include <ctime>

namespace {

constexpr int64_t NANOSECONDS = 1000000000;

bool isLeapYear(int year) {
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

// The ranges that SetLocalTime accepts; mktime would roll anything else over
// into a neighbouring date instead of refusing it.
bool isValid(const OsLocalTime& time) {
  static const int DAYS[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (time.year < 1601 || time.year > 30827 || time.month < 1 || time.month > 12) return false;
  int days = time.month == 2 && isLeapYear(time.year) ? 29 : DAYS[time.month - 1];
  return time.day >= 1 && time.day <= days && time.hour >= 0 && time.hour <= 23 &&
         time.minute >= 0 && time.minute <= 59 && time.second >= 0 && time.second <= 59 &&
         time.milliseconds >= 0 && time.milliseconds <= 999;
}

}  // namespace

bool osPerformanceCounter(int64_t* ticks) {
  timespec now;
  if (clock_gettime(CLOCK_MONOTONIC, &now) != 0) return false;
  *ticks = now.tv_sec * NANOSECONDS + now.tv_nsec;
  return true;
}

bool osPerformanceFrequency(int64_t* ticksPerSecond) {
  *ticksPerSecond = NANOSECONDS;
  return true;
}

void osGetLocalTime(OsLocalTime* time) {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  tm local;
  localtime_r(&now.tv_sec, &local);
  *time = {local.tm_year + 1900, local.tm_mon + 1,
           local.tm_wday,        local.tm_mday,
           local.tm_hour,        local.tm_min,
           local.tm_sec,         static_cast<int>(now.tv_nsec / 1000000)};
}

bool osSetLocalTime(const OsLocalTime& time) {
  if (!isValid(time)) return false;
  tm local{};
  local.tm_year = time.year - 1900;
  local.tm_mon = time.month - 1;
  local.tm_mday = time.day;
  local.tm_hour = time.hour;
  local.tm_min = time.minute;
  local.tm_sec = time.second;
  local.tm_isdst = -1;
  time_t seconds = mktime(&local);
  if (seconds == static_cast<time_t>(-1)) return false;
  timespec wanted{seconds, static_cast<long>(time.milliseconds) * 1000000};
  return clock_settime(CLOCK_REALTIME, &wanted) == 0;
}
