#include "os/clock.h"

#include <windows.h>

bool osPerformanceCounter(int64_t* ticks) {
  LARGE_INTEGER value;
  if (!QueryPerformanceCounter(&value)) return false;
  *ticks = value.QuadPart;
  return true;
}

bool osPerformanceFrequency(int64_t* ticksPerSecond) {
  LARGE_INTEGER value;
  if (!QueryPerformanceFrequency(&value)) return false;
  *ticksPerSecond = value.QuadPart;
  return true;
}

void osGetLocalTime(OsLocalTime* time) {
  SYSTEMTIME now;
  GetLocalTime(&now);
  *time = {now.wYear, now.wMonth,  now.wDayOfWeek, now.wDay,
           now.wHour, now.wMinute, now.wSecond,    now.wMilliseconds};
}

bool osSetLocalTime(const OsLocalTime& time) {
  SYSTEMTIME wanted;
  wanted.wYear = static_cast<WORD>(time.year);
  wanted.wMonth = static_cast<WORD>(time.month);
  wanted.wDayOfWeek = static_cast<WORD>(time.dayOfWeek);
  wanted.wDay = static_cast<WORD>(time.day);
  wanted.wHour = static_cast<WORD>(time.hour);
  wanted.wMinute = static_cast<WORD>(time.minute);
  wanted.wSecond = static_cast<WORD>(time.second);
  wanted.wMilliseconds = static_cast<WORD>(time.milliseconds);
  return SetLocalTime(&wanted) != 0;
}
