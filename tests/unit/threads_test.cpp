// Contexts on different threads do not disturb each other.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "frame/frame.h"
#include "kovo/host_embed.h"

extern "C" void CSETARGERR(VMEngine*);
extern "C" void DOSERROR(VMEngine*);
extern "C" void HB_ISNULL(VMEngine*);

namespace {

std::atomic<int> reportedErrors{0};

void countError(VMEngine*, void*, const Item*) {
  reportedErrors++;
}

const HostEvents COUNTING = {countError, nullptr, nullptr, nullptr,
                             nullptr,    nullptr, nullptr, nullptr};

// Sets the thread's own text-tools mode and DOS error code over and over,
// raising errors between, and checks that it reads back its own values.
bool hammer(int mode, bool extended) {
  VMConfig config{&COUNTING, nullptr, extended};
  VMEngine* vm = vmCreate(&config);
  DynSymbol* setMode = xdynsymGet(vm, "CSETARGERR");
  setMode->function = CSETARGERR;
  DynSymbol* dosError = xdynsymGet(vm, "DOSERROR");
  dosError->function = DOSERROR;
  DynSymbol* isNull = xdynsymGet(vm, "HB_ISNULL");
  isNull->function = HB_ISNULL;
  Item number{};
  bool consistent = true;
  for (int i = 0; i < 20000 && consistent; i++) {
    itemPutNI(vm, &number, mode);
    Item* args[] = {&number};
    vmCallFunction(vm, setMode, 1, args);
    vmCallFunction(vm, dosError, 1, args);
    vmCallFunction(vm, isNull, 1, args);
    consistent = itemGetNI(vmCallFunction(vm, setMode, 0, nullptr)) == mode &&
                 itemGetNI(vmCallFunction(vm, dosError, 0, nullptr)) == mode;
  }
  itemClear(vm, &number);
  return vmDestroy(vm) == 0 && consistent;
}

TEST(Threads, ContextsOnTwoThreadsKeepTheirOwnState) {
  bool first = false;
  bool second = false;
  std::thread a([&] { first = hammer(2, false); });
  std::thread b([&] { second = hammer(-1, true); });
  a.join();
  b.join();
  EXPECT_TRUE(first);
  EXPECT_TRUE(second);
  EXPECT_EQ(reportedErrors.load(), 40000);  // every HB_ISNULL of a number, on both threads
}

}  // namespace
