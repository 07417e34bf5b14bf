// The Windows name space on POSIX: drives, separators, "..", trailing dots,
// letter case and the Windows form of names handed back.
#include <gtest/gtest.h>

#include <filesystem>

#include "host/posix/name_space.h"
#include "kovo/host_files.h"
#include "temp_directory.h"

namespace {

TEST(DriveTableTest, EntriesMapLettersAndCKeepsItsDefault) {
  DriveTable table = parseDrives("d=/srv//data/;E=/mnt/cd;bad;9=/x;F=relative;C=/home/../opt");
  EXPECT_EQ(table.roots['D' - 'A'], "/srv/data");
  EXPECT_EQ(table.roots['E' - 'A'], "/mnt/cd");
  EXPECT_EQ(table.roots['C' - 'A'], "/opt");
  EXPECT_EQ(table.roots['F' - 'A'], "");
  EXPECT_EQ(parseDrives(nullptr).roots[DRIVE_C], "/");
  EXPECT_EQ(parseDrives("C=").roots[DRIVE_C], "");
}

DriveState sampleState() {
  DriveState state;
  state.table = parseDrives("D=/srv/data");
  state.current = DRIVE_C;
  state.directories[DRIVE_C] = "/home/u";
  state.directories['D' - 'A'] = "/srv/data/sub";
  return state;
}

TEST(LexicalNameTest, DrivesSeparatorsAndDotsResolveAsOnWindows) {
  struct Case {
    const char* name;
    const char* path;
    int drive;
  };
  const Case cases[] = {
      {"C:\\tmp\\a.txt", "/tmp/a.txt", 2},
      {"c:/tmp\\b/..\\a.txt", "/tmp/a.txt", 2},
      {"D:\\..\\..\\x", "/srv/data/x", 3},  // never above the drive's root
      {"D:x", "/srv/data/sub/x", 3},        // the drive's own current directory
      {"D:", "/srv/data/sub", 3},
      {"d:\\", "/srv/data", 3},
      {"\\etc\\Hosts", "/etc/Hosts", -1},  // the current drive's root
      {"a\\b/c", "a/b/c", -1},             // relative names stay relative
      {"..\\y", "/home/y", -1},
      {"..\\..\\..\\y", "/y", -1},
      {"NAME.", "NAME", -1},  // trailing dots and blanks are dropped
      {"dir. \\x", "dir/x", -1},
      {"a\\.\\.\\b", "a/b", -1},
  };
  DriveState state = sampleState();
  for (const Case& c : cases) {
    LexicalName out;
    ASSERT_TRUE(lexicalName(c.name, state, &out)) << c.name;
    EXPECT_EQ(out.path, c.path) << c.name;
    EXPECT_EQ(out.drive, c.drive) << c.name;
  }
  LexicalName out;
  EXPECT_FALSE(lexicalName("E:\\x", state, &out));
}

TEST(WindowsFormTest, TheLongestMappingThatHoldsTheNameGivesTheDrive) {
  DriveTable table = parseDrives("D=/srv/data;E=/srv/data/deep");
  struct Case {
    const char* path;
    const char* form;
  };
  const Case cases[] = {
      {"/", "C:\\"},
      {"/tmp/work", "C:\\tmp\\work"},
      {"/srv/data", "D:\\"},
      {"/srv/data/sub/x.dbf", "D:\\sub\\x.dbf"},
      {"/srv/database", "C:\\srv\\database"},
      {"/srv/data/deep/y", "E:\\y"},
  };
  for (const Case& c : cases) {
    std::string form;
    ASSERT_TRUE(windowsForm(table, c.path, &form)) << c.path;
    EXPECT_EQ(form, c.form);
  }
  std::string form;
  EXPECT_FALSE(windowsForm(parseDrives("C=/opt"), "/tmp", &form));
}

TEST(LetterCaseTest, UniqueMatchesAreTakenAmbiguousOnesNever) {
  TempDirectory dir;
  std::filesystem::create_directory("Dir");
  dir.write("Dir/File.TXT", "x");
  dir.write("dup.txt", "1");
  dir.write("DUP.txt", "2");
  struct Case {
    const char* name;
    NameStatus status;
    const char* path;
  };
  const Case cases[] = {
      {"dir/file.txt", NameStatus::Exists, "Dir/File.TXT"},
      {"Dir/File.TXT", NameStatus::Exists, "Dir/File.TXT"},
      {"DIR/new.txt", NameStatus::Missing, "Dir/new.txt"},  // created as written
      {"nodir/x", NameStatus::PathMissing, "nodir/x"},
      {"dir/file.txt/x", NameStatus::PathMissing, "Dir/File.TXT/x"},
      {"Dup.TXT", NameStatus::Missing, "Dup.TXT"},  // two candidates: neither
      {"DUP.txt", NameStatus::Exists, "DUP.txt"},
  };
  for (const Case& c : cases) {
    std::string path = c.name;
    EXPECT_EQ(matchLetterCase(&path, 0), c.status) << c.name;
    EXPECT_EQ(path, c.path) << c.name;
  }
  std::string absolute = (dir.path() / "dir" / "FILE.txt").string();
  size_t fixed = dir.path().string().size();
  EXPECT_EQ(matchLetterCase(&absolute, fixed), NameStatus::Exists);
  EXPECT_EQ(absolute, (dir.path() / "Dir" / "File.TXT").string());
}

TEST(WildcardTest, WindowsMasksMatchLetterCaseAside) {
  struct Case {
    const char* name;
    const char* mask;
    bool matches;
  };
  const Case cases[] = {
      {"abc.txt", "*.TXT", true},   {"abc", "*.*", true},
      {"abc", "ABC.*", true},       {"abc.d", "abc.*", true},
      {"abc.txt", "a?c.txt", true}, {"ab.txt", "a?c.txt", false},
      {"x.tx", "*.txt", false},     {"aXbXc", "a*b*c", true},
      {"aXbXd", "a*b*c", false},    {"", "*", true},
      {"abc", "", false},           {"a.b.c", "*.c", true},
  };
  for (const Case& c : cases)
    EXPECT_EQ(fsMatchWild(c.name, c.mask), c.matches) << c.name << " " << c.mask;
}

}  // namespace
