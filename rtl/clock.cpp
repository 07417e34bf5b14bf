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

// Sets the local clock from its current reading with the given fields
// replaced by parameters 1, 2, ... in order; the logical parameter after them
// is read and ignored.
template <size_t N>
void setLocalTimeFields(VMEngine* vm, int OsLocalTime::*const (&fields)[N]) {
  OsLocalTime time;
  osGetLocalTime(&time);
  for (size_t i = 0; i < N; i++)
    time.*fields[i] = paramGetNI(vm, static_cast<int>(i) + 1);
  param(vm, static_cast<int>(N) + 1);
  itemPutL(vm, returnItem(vm), osSetLocalTime(time));
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

// The date is replaced (parameter 3 is the day of the month, 4 the day of the
// week), the time of day kept.
KOVO_FUNC(SETNEWDATE) {
  static constexpr int OsLocalTime::*FIELDS[] = {&OsLocalTime::year, &OsLocalTime::month,
                                                 &OsLocalTime::day, &OsLocalTime::dayOfWeek};
  setLocalTimeFields(vm, FIELDS);
}

// The time of day is replaced, the date and the milliseconds kept.
KOVO_FUNC(SETNEWTIME) {
  static constexpr int OsLocalTime::*FIELDS[] = {&OsLocalTime::hour, &OsLocalTime::minute,
                                                 &OsLocalTime::second};
  setLocalTimeFields(vm, FIELDS);
}
