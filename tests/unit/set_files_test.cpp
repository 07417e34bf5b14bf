// The output files of SET, seen from the handles the settings block keeps:
// where an appending open leaves the file, and which handles the printer
// switch opens and closes. Every file lives in a temporary directory.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "vm_fixture.h"

extern "C" void SET(VMEngine* vm);

namespace {

#if defined(_WIN32)
constexpr bool onWindows = true;
#else
constexpr bool onWindows = false;
#endif

class SetFilesTest : public VmTest {
 protected:
  void SetUp() override {
    VmTest::SetUp();
    std::random_device random;
    do {
      directory = std::filesystem::temp_directory_path() / ("kovo-set-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(directory));
    call(SET, {num(HB_SET_DEFAULT), str(directory.string())});
  }
  void TearDown() override {
    call(SET, {num(HB_SET_ALTFILE), nil()});
    call(SET, {num(HB_SET_PRINTER), logical(false)});
    call(SET, {num(HB_SET_PRINTFILE), str("")});
    VmTest::TearDown();
    std::filesystem::remove_all(directory);
  }
  std::string contents(const char* name) const {
    std::ifstream in(directory / name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  void write(const char* name, const std::string& bytes) const {
    std::ofstream(directory / name, std::ios::binary) << bytes;
  }

  std::filesystem::path directory;
};

TEST_F(SetFilesTest, AppendingWritesOverATrailingEndOfFileMark) {
  struct Case {
    int setting;
    const char* file;
    std::string before;
    std::string after;
  };
  const Case cases[] = {
      {HB_SET_ALTFILE, "LOG.txt", "abc\x1A", "abcXY"},
      {HB_SET_ALTFILE, "LOG.txt", "abc", "abcXY"},
      {HB_SET_ALTFILE, "LOG.txt", "", "XY"},
      {HB_SET_EXTRAFILE, "LOG.prn", "\x1A", "XY"},
      {HB_SET_PRINTFILE, "LOG.prn", "abc\x1A", "abc\x1AXY"},
  };
  for (const Case& c : cases) {
    write(c.file, c.before);
    call(SET, {num(c.setting), str("LOG"), logical(true)});
    int32_t handle = c.setting == HB_SET_ALTFILE     ? vm->set.altHandle
                     : c.setting == HB_SET_EXTRAFILE ? vm->set.extraHandle
                                                     : vm->set.printHandle;
    ASSERT_NE(handle, FS_ERROR) << c.setting;
    EXPECT_EQ(fsWrite(vm, handle, "XY", 2), 2);
    call(SET, {num(c.setting), c.setting == HB_SET_PRINTFILE ? str("") : nil()});
    EXPECT_EQ(contents(c.file), c.after) << c.setting << " " << c.before;
  }
}

TEST_F(SetFilesTest, NamingCreatesOrTruncatesInTheDefaultDirectory) {
  struct Case {
    int setting;
    const char* name;
    bool append;
    const char* file;
    std::string before;
    std::string after;
  };
  const Case cases[] = {
      {HB_SET_ALTFILE, "LOG", false, "LOG.txt", "old", ""},
      {HB_SET_ALTFILE, "NEW", true, "NEW.txt", "", ""},
      {HB_SET_ALTFILE, "LOG.log", true, "LOG.log", "old", "old"},
      {HB_SET_EXTRAFILE, "EXTRA", false, "EXTRA.prn", "old", ""},
      {HB_SET_PRINTFILE, "PRINTOUT", false, "PRINTOUT.prn", "old", ""},
  };
  for (const Case& c : cases) {
    if (!c.before.empty()) write(c.file, c.before);
    call(SET, {num(c.setting), str(c.name), logical(c.append)});
    call(SET, {num(c.setting), c.setting == HB_SET_PRINTFILE ? str("") : nil()});
    EXPECT_TRUE(std::filesystem::exists(directory / c.file)) << c.file;
    EXPECT_EQ(contents(c.file), c.after) << c.file;
  }
  EXPECT_TRUE(errors.empty());
}

// Names take the Windows form: either separator, a directory in any letter case.
TEST_F(SetFilesTest, NamesGoThroughTheWindowsNameSpace) {
  if (onWindows) GTEST_SKIP() << "the POSIX name space's own mapping of names";
  std::filesystem::create_directory(directory / "SUB");
  call(SET, {num(HB_SET_ALTFILE), str((directory / "sub\\Log").string())});
  call(SET, {num(HB_SET_ALTFILE), nil()});
  EXPECT_TRUE(std::filesystem::exists(directory / "SUB" / "Log.txt"));
  write("SUB/Trace.log", "old");
  call(SET, {num(HB_SET_TRACEFILE), str((directory / "sub\\trace.LOG").string())});
  EXPECT_EQ(contents("SUB/Trace.log"), "");
  EXPECT_FALSE(std::filesystem::exists(directory / "SUB" / "trace.LOG"));
}

TEST_F(SetFilesTest, TraceFileIsEmptiedInBothModes) {
  std::string name = (directory / "trace.log").string();
  for (bool option : {false, true}) {
    write("trace.log", "old");
    call(SET, {num(HB_SET_TRACEFILE), str(name), logical(option)});
    EXPECT_EQ(contents("trace.log"), "") << option;
  }
}

TEST_F(SetFilesTest, PrinterSwitchFollowsThePrinterFileUnlessOneWasNamed) {
  if (onWindows) GTEST_SKIP() << "PRN is the printer device on Windows, not a file";
  call(SET, {num(HB_SET_PRINTFILE)});
  EXPECT_STREQ(vm->set.text[HB_SET_PRINTFILE], "PRN");
  call(SET, {num(HB_SET_PRINTER), logical(true)});
  EXPECT_NE(vm->set.printHandle, FS_ERROR);
  EXPECT_TRUE(std::filesystem::exists(directory / "PRN.prn"));
  call(SET, {num(HB_SET_PRINTER), logical(false)});
  EXPECT_EQ(vm->set.printHandle, FS_ERROR);

  // A file named through setting 24 stays open whatever the switch says.
  call(SET, {num(HB_SET_PRINTFILE), str("OUT")});
  int32_t named = vm->set.printHandle;
  EXPECT_NE(named, FS_ERROR);
  EXPECT_EQ(vm->set.printerFileFlag, 1);
  call(SET, {num(HB_SET_PRINTER), logical(true)});
  call(SET, {num(HB_SET_PRINTER), logical(false)});
  EXPECT_EQ(vm->set.printHandle, named);
}

TEST_F(SetFilesTest, FileLayerErrorCodeSurvivesTheOpen) {
  fsSetError(vm, FS_SHARING_VIOLATION);
  call(SET, {num(HB_SET_ALTFILE), str("LOG")});
  EXPECT_EQ(fsError(vm), FS_SHARING_VIOLATION);
  EXPECT_STREQ(vm->set.lastOutputName, "LOG");
}

}  // namespace
