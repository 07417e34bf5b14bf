// The clock functions: seconds of the day and of the processor, the
// performance counter, the wait period and setting the local date and time.
#include "os/clock.h"
#include "frame/frame.h"
#include "frame/state.h"

namespace {

constexpr double SECONDS_PER_DAY = 86400.0;

struct WaitState {
  double armedAt;  // seconds since midnight of the last arming call
  double period;   // seconds asked for then
};
const StateSlot<WaitState> waitState;

// The counter's value as a double; a value the system could not give reads as 0.
void returnCounter(VMEngine* vm, bool (*read)(int64_t*)) {
  int64_t value = 0;
  read(&value);
  itemPutND(vm, returnItem(vm), static_cast<double>(value));
}

}  // namespace

KOVO_FUNC(SECONDS) {
  itemPutND(vm, returnItem(vm), dateSeconds());
}

KOVO_FUNC(SECONDSCPU) {
  itemPutND(vm, returnItem(vm), secondsCPU(paramGetNI(vm, 1)));
}

KOVO_FUNC(HB_CLOCKS2SECS) {
  itemPutND(vm, returnItem(vm), paramGetNL(vm, 1) / 1000.0);
}

KOVO_FUNC(QUERYPERFORMANCEFREQUENCY) {
  returnCounter(vm, osPerformanceFrequency);
}

KOVO_FUNC(QUERYPERFORMANCECOUNTER) {
  returnCounter(vm, osPerformanceCounter);
}

// Answers false after every arming and in every later call: the period is
// stored but never consulted, and programs are written against that answer.
KOVO_FUNC(WAITPERIOD) {
  WaitState& state = waitState(vm);
  double now = dateSeconds();
  if (paramCount(vm) >= 1) {
    state.armedAt = now;
    state.period = paramGetND(vm, 1) / 100.0;
  }
  if (now < state.armedAt) now += SECONDS_PER_DAY;
  itemPutL(vm, returnItem(vm), now < state.armedAt);
}

// The date is replaced, the time of day kept; the last parameter is read and ignored.
KOVO_FUNC(SETNEWDATE) {
  OsLocalTime time;
  osGetLocalTime(&time);
  time.year = paramGetNI(vm, 1);
  time.month = paramGetNI(vm, 2);
  time.day = paramGetNI(vm, 3);
  time.dayOfWeek = paramGetNI(vm, 4);
  param(vm, 5);
  itemPutL(vm, returnItem(vm), osSetLocalTime(time));
}

// The time of day is replaced, the date and the milliseconds kept.
KOVO_FUNC(SETNEWTIME) {
  OsLocalTime time;
  osGetLocalTime(&time);
  time.hour = paramGetNI(vm, 1);
  time.minute = paramGetNI(vm, 2);
  time.second = paramGetNI(vm, 3);
  param(vm, 4);
  itemPutL(vm, returnItem(vm), osSetLocalTime(time));
}
