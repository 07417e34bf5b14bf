// RUNHRBFILE hands its file to the host, which runs it through its embedder.
#include <string>

#include "frame/frame.h"
#include "vm_fixture.h"

KOVO_FUNC(RUNHRBFILE);

namespace {

class ScriptCallsTest : public VmTest {
 public:
  void SetUp() override {
    VmTest::SetUp();
    vm->events = &EVENTS;
  }
  std::vector<std::string> paths;

 private:
  static bool onRunFile(VMEngine* vm, void*, const char* path) {
    static_cast<ScriptCallsTest*>(vm->eventCargo)->paths.emplace_back(path);
    return std::string(path) != "missing.prg";
  }
  static constexpr HostEvents EVENTS = {nullptr, nullptr, nullptr, nullptr,
                                        nullptr, nullptr, nullptr, onRunFile};
};

TEST_F(ScriptCallsTest, RunHrbFileRunsTheNamedFileAndTellsWhetherItRan) {
  EXPECT_TRUE(itemGetL(call(RUNHRBFILE, {str("job.prg"), num(1)})));
  EXPECT_FALSE(itemGetL(call(RUNHRBFILE, {str("missing.prg")})));
  EXPECT_FALSE(itemGetL(call(RUNHRBFILE, {num(5)})));
  EXPECT_EQ(paths, (std::vector<std::string>{"job.prg", "missing.prg"}));
}

}  // namespace
