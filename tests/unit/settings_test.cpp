// The host's settings block: starting values, the listener list, and the
// clock services behind SET's neighbours.
#include <vector>

#include "os/clock.h"
#include "rtl/set_rules.h"
#include "vm_fixture.h"

namespace {

std::vector<int> heard;
void firstListener(int32_t setting, int32_t phase) {
  heard.push_back(setting * 10 + phase);
}
void secondListener(int32_t setting, int32_t) {
  heard.push_back(-setting);
}

class SettingsTest : public VmTest {};

TEST_F(SettingsTest, StartingValuesAreThoseOfAFreshInterpreter) {
  const SetBlock& set = vm->set;
  struct Expected {
    int number;
    int32_t value;
  };
  const Expected values[] = {
      {HB_SET_EXACT, 0},       {HB_SET_DECIMALS, 2},    {HB_SET_EPOCH, 1900},
      {HB_SET_EXCLUSIVE, 1},   {HB_SET_CANCEL, 1},      {HB_SET_TYPEAHEAD, 50},
      {HB_SET_EVENTMASK, 128}, {HB_SET_MBLOCKSIZE, 64}, {HB_SET_AUTOSHARE, 0},
      {HB_SET_ERRORLOOP, 8},   {HB_SET_EXT119, 1},      {HB_SET_GTMODE, 0}};
  for (const Expected& expected : values)
    EXPECT_EQ(set.value[expected.number], expected.value) << expected.number;
  EXPECT_STREQ(set.text[HB_SET_DATEFORMAT], "mm/dd/yy");
  EXPECT_EQ(set.century, 0);
  EXPECT_EQ(set.char107, ' ');
  EXPECT_EQ(set.altHandle, -1);
  EXPECT_EQ(set.extraHandle, -1);
  EXPECT_EQ(set.printHandle, -1);
  EXPECT_EQ(set.eol118Exists, 0);
}

TEST_F(SettingsTest, ListenersAreCalledInOrderAndRemovedOneAtATime) {
  heard.clear();
  setListenerAdd(vm, firstListener);
  setListenerAdd(vm, secondListener);
  setListenerAdd(vm, firstListener);
  setNotify(vm, 7, SET_LISTENER_AFTER);
  EXPECT_EQ(heard, (std::vector<int>{71, -7, 71}));
  EXPECT_TRUE(setListenerRemove(vm, firstListener));
  heard.clear();
  setNotify(vm, 3, SET_LISTENER_BEFORE);
  EXPECT_EQ(heard, (std::vector<int>{-3, 30}));
  EXPECT_TRUE(setListenerRemove(vm, firstListener));
  EXPECT_FALSE(setListenerRemove(vm, firstListener));
  // The last one stays for the context's end to release.
}

TEST_F(SettingsTest, ValueRulesReadTheirItems) {
  struct LogicalCase {
    Item* item;
    bool fallback;
    bool expected;
  };
  const LogicalCase logicals[] = {
      {logical(true), false, true}, {str("on"), false, true}, {str("Onward"), false, true},
      {str("OFF"), true, false},    {str("of"), true, true},  {str("O"), false, false},
      {num(1), false, false},       {nil(), true, true},      {str("offset"), true, false},
  };
  for (const LogicalCase& c : logicals)
    EXPECT_EQ(setLogicalRule(c.item, c.fallback), c.expected) << text(c.item);
  EXPECT_TRUE(setLogicalRule(nullptr, true));

  const char* formats[] = {"yyyy", "dd.mm.YyYy", "yyyyy"};
  for (const char* format : formats)
    EXPECT_TRUE(setCenturyOfFormat(format)) << format;
  const char* shortFormats[] = {"", "yyy", "yy/mm/yyyy", "dd/mm"};
  for (const char* format : shortFormats)
    EXPECT_FALSE(setCenturyOfFormat(format)) << format;
}

TEST_F(SettingsTest, CpuSecondsOfEveryModeAddUp) {
  double user = secondsCPU(1);
  double system = secondsCPU(2);
  EXPECT_GE(user, 0.0);
  EXPECT_GE(system, 0.0);
  // Within a nanosecond: the x87 unit rounds the sum inside the function from
  // wider values than the two doubles added here.
  for (int mode : {0, 3, 4, 11, -1})
    EXPECT_GE(secondsCPU(mode), user + system - 1e-9) << mode;
  double now = dateSeconds();
  EXPECT_GE(now, 0.0);
  EXPECT_LT(now, 86400.0);
}

// Only times that no clock can take: the system clock is never changed here.
TEST(OsClock, RefusesTimesThatCannotBe) {
  OsLocalTime now;
  osGetLocalTime(&now);
  EXPECT_GE(now.month, 1);
  EXPECT_LE(now.month, 12);
  struct Change {
    int OsLocalTime::*field;
    int value;
  };
  const Change invalid[] = {
      {&OsLocalTime::month, 13},   {&OsLocalTime::month, 0},           {&OsLocalTime::day, 32},
      {&OsLocalTime::day, 0},      {&OsLocalTime::hour, 25},           {&OsLocalTime::hour, -1},
      {&OsLocalTime::minute, 60},  {&OsLocalTime::second, 60},         {&OsLocalTime::year, 1600},
      {&OsLocalTime::year, 30828}, {&OsLocalTime::milliseconds, 1000},
  };
  for (const Change& change : invalid) {
    OsLocalTime wanted = now;
    wanted.*change.field = change.value;
    EXPECT_FALSE(osSetLocalTime(wanted)) << change.value;
  }
  OsLocalTime leapDay = now;
  leapDay.year = 2023;
  leapDay.month = 2;
  leapDay.day = 29;
  EXPECT_FALSE(osSetLocalTime(leapDay));

  int64_t frequency = 0, first = 0, second = 0;
  ASSERT_TRUE(osPerformanceFrequency(&frequency));
  EXPECT_GT(frequency, 0);
  ASSERT_TRUE(osPerformanceCounter(&first));
  ASSERT_TRUE(osPerformanceCounter(&second));
  EXPECT_GE(second, first);
}

}  // namespace
