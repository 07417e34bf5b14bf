// Seconds and their "HH:MM:SS" texts: DAYS, TSTRING, SECS, ELAPTIME.
#include <cstdio>

#include "frame/frame.h"

namespace {

constexpr int32_t SECONDS_PER_DAY = 86400;

// The whole number at the start of a text, held in the long range.
int64_t leadingNumber(const char* text, uint32_t length) {
  double value = strVal(text, length);
  if (value >= 2147483647.0) return 2147483647;
  if (value <= -2147483648.0) return -2147483648LL;
  return static_cast<int64_t>(value);
}

// Hours from the start, minutes from the fourth character, seconds from the
// seventh: "12:30:15" is 45,015.
int64_t secondsOfTime(const char* text, uint32_t length) {
  int64_t seconds = leadingNumber(text, length) * 3600;
  if (length >= 4) seconds += leadingNumber(text + 3, length - 3) * 60;
  if (length >= 7) seconds += leadingNumber(text + 6, length - 6);
  return seconds;
}

// "HH:MM:SS" of a count taken as unsigned 32 bits, the hours within a day.
void returnClockText(VMEngine* vm, uint32_t seconds) {
  char text[16];
  int length = std::snprintf(text, sizeof text, "%02u:%02u:%02u", seconds / 3600 % 24,
                             seconds / 60 % 60, seconds % 60);
  itemPutCL(vm, returnItem(vm), text, static_cast<uint32_t>(length));
}

int64_t paramSeconds(VMEngine* vm, int n) {
  const char* text = paramXPChar(vm, n);
  return secondsOfTime(text, paramGetCLen(vm, n));
}

}  // namespace

KOVO_FUNC(DAYS) {
  itemPutNL(vm, returnItem(vm), paramGetNL(vm, 1) / SECONDS_PER_DAY);
}

KOVO_FUNC(TSTRING) {
  returnClockText(vm, static_cast<uint32_t>(paramGetNL(vm, 1)));
}

KOVO_FUNC(SECS) {
  itemPutNL(vm, returnItem(vm), static_cast<int32_t>(paramSeconds(vm, 1)));
}

// An end before the start crosses midnight.
KOVO_FUNC(ELAPTIME) {
  int64_t elapsed = paramSeconds(vm, 2) - paramSeconds(vm, 1);
  if (elapsed < 0) elapsed += SECONDS_PER_DAY;
  returnClockText(vm, static_cast<uint32_t>(elapsed));
}
