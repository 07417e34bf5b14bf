// The host's file layer: the error cell's codes, names in any letter case,
// sharing modes within and across processes, drives and their directories.
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "kovo/host.h"
#include "temp_directory.h"
#include "vm_fixture.h"

namespace {

class FileLayerTest : public VmTest {
 protected:
  TempDirectory dir;
};

TEST_F(FileLayerTest, FailuresLeaveDosCodesInTheCellAndWindowsCodesBeside) {
  std::filesystem::create_directory("sub");
  dir.write("file.txt", "abc");
  struct Case {
    const char* what;
    bool (*run)(VMEngine* vm);
    uint16_t cell;
    uint32_t os;
  };
  const Case cases[] = {
      {"open missing", [](VMEngine* vm) { return fsOpen(vm, "none.txt", 0) != FS_ERROR; }, 2, 2},
      {"open in missing directory",
       [](VMEngine* vm) { return fsOpen(vm, "nodir\\x.txt", 0) != FS_ERROR; }, 3, 3},
      {"open on an unmapped drive",
       [](VMEngine* vm) { return fsOpen(vm, "Q:\\x.txt", 0) != FS_ERROR; }, 3, 3},
      {"open a directory", [](VMEngine* vm) { return fsOpen(vm, "SUB", 0) != FS_ERROR; }, 5, 5},
      {"make an existing directory", [](VMEngine* vm) { return fsMkDir(vm, "Sub"); }, 80, 183},
      {"make a directory over a file", [](VMEngine* vm) { return fsMkDir(vm, "file.txt"); }, 80,
       183},
      {"delete missing", [](VMEngine* vm) { return fsDelete(vm, "none"); }, 2, 2},
      {"delete a directory", [](VMEngine* vm) { return fsDelete(vm, "sub"); }, 5, 5},
      {"rename onto an existing file",
       [](VMEngine* vm) { return fsRename(vm, "file.txt", "sub\\..\\FILE.TXT\\..\\sub"); }, 80,
       183},
      {"rename a missing file", [](VMEngine* vm) { return fsRename(vm, "none", "x"); }, 2, 2},
      {"close a bad handle",
       [](VMEngine* vm) {
         fsClose(vm, 9999);
         return fsError(vm) == 0;
       },
       6, 6},
      {"read a bad handle", [](VMEngine* vm) { return fsRead(vm, 9999, nullptr, 0) != 0; }, 6, 6},
      {"seek before the start",
       [](VMEngine* vm) {
         FHANDLE h = fsOpen(vm, "file.txt", FO_READ);
         bool moved = fsSeekLarge(vm, h, -1, FS_SET) >= 0;
         uint16_t cell = fsError(vm);
         uint32_t os = fsOsError(vm);
         fsClose(vm, h);
         fsSetError(vm, cell);
         EXPECT_EQ(os, 131u);
         return moved;
       },
       5, 0},
  };
  for (const Case& c : cases) {
    fsSetError(vm, 0);
    EXPECT_FALSE(c.run(vm)) << c.what;
    EXPECT_EQ(fsError(vm), c.cell) << c.what;
    if (c.os) {
      EXPECT_EQ(fsOsError(vm), c.os) << c.what;
    }
  }
}

TEST_F(FileLayerTest, NamesMatchInAnyCaseAndNewOnesKeepTheirs) {
  FHANDLE h = fsCreate(vm, "Abc.TXT", 0);
  ASSERT_NE(h, FS_ERROR);
  EXPECT_EQ(fsWriteLarge(vm, h, "abc", 3), 3u);
  fsClose(vm, h);
  EXPECT_TRUE(std::filesystem::exists("Abc.TXT"));
  h = fsOpen(vm, ".\\aBC.txt", FO_READ);
  ASSERT_NE(h, FS_ERROR);
  char buffer[8] = {};
  EXPECT_EQ(fsReadLarge(vm, h, buffer, sizeof buffer), 3u);
  EXPECT_STREQ(buffer, "abc");
  fsClose(vm, h);
  EXPECT_TRUE(fsFile(vm, "ABC.TXT"));
  EXPECT_TRUE(fsRename(vm, "abc.txt", "ABC.txt"));  // a change of case alone
  EXPECT_TRUE(std::filesystem::exists("ABC.txt"));
  EXPECT_FALSE(std::filesystem::exists("Abc.TXT"));
}

TEST_F(FileLayerTest, HandlesKeepTheirAccessAndAnEmptyWriteCutsTheFile) {
  dir.write("data", "0123456789");
  FHANDLE h = fsOpen(vm, "data", FO_WRITE);
  ASSERT_NE(h, FS_ERROR);
  char byte;
  EXPECT_EQ(fsRead(vm, h, &byte, 1), 0);
  EXPECT_EQ(fsError(vm), FS_ACCESS_DENIED);
  EXPECT_EQ(fsSeek(vm, h, 4, FS_SET), 4u);
  EXPECT_EQ(fsWrite(vm, h, "", 0), 0);
  EXPECT_EQ(fsError(vm), 0);
  fsClose(vm, h);
  EXPECT_EQ(std::filesystem::file_size("data"), 4u);
  h = fsOpen(vm, "data", FO_READ);
  EXPECT_EQ(fsWrite(vm, h, "x", 1), 0);
  EXPECT_EQ(fsError(vm), FS_ACCESS_DENIED);
  fsClose(vm, h);
}

TEST_F(FileLayerTest, ReadingAheadNeverHidesWhatTheLayerWrote) {
  dir.write("data", "0123456789");
  FHANDLE reader = fsOpen(vm, "data", FO_READ | FO_DENYNONE);
  FHANDLE writer = fsOpen(vm, "data", FO_READWRITE | FO_DENYNONE);
  char bytes[8] = {};
  EXPECT_EQ(fsRead(vm, reader, bytes, 2), 2);
  EXPECT_EQ(fsSeekLarge(vm, reader, -1, FS_RELATIVE), 1);  // inside what was read ahead
  EXPECT_EQ(fsSeekLarge(vm, writer, 4, FS_SET), 4);
  EXPECT_EQ(fsWrite(vm, writer, "xy", 2), 2);
  EXPECT_EQ(fsRead(vm, reader, bytes, 6), 6);
  EXPECT_STREQ(bytes, "123xy6");
  EXPECT_EQ(fsSeekLarge(vm, reader, 0, FS_RELATIVE), 7);
  EXPECT_EQ(fsSeekLarge(vm, reader, -3, FS_END), 7);
  EXPECT_EQ(fsRead(vm, reader, bytes, 8), 3);
  fsClose(vm, reader);
  fsClose(vm, writer);
}

TEST_F(FileLayerTest, SharingModesConflictAsOnWindows) {
  dir.write("t.dbf", "x");
  struct Case {
    uint16_t first;
    uint16_t second;
    bool opens;
  };
  const Case cases[] = {
      {FO_READ | FO_EXCLUSIVE, FO_READ | FO_DENYNONE, false},
      {FO_READ | FO_DENYNONE, FO_READ | FO_EXCLUSIVE, false},
      {FO_READ | FO_DENYWRITE, FO_READ | FO_DENYNONE, true},
      {FO_READ | FO_DENYWRITE, FO_READWRITE | FO_DENYNONE, false},
      {FO_READWRITE | FO_DENYNONE, FO_READ | FO_DENYWRITE, false},
      {FO_WRITE | FO_DENYREAD, FO_WRITE | FO_DENYNONE, true},
      {FO_WRITE | FO_DENYREAD, FO_READ | FO_DENYNONE, false},
      {FO_READWRITE | FO_COMPAT, FO_READWRITE | FO_COMPAT, true},
      {FO_READ | FO_DENYNONE | FO_PRIVATE, FO_READWRITE | FO_DENYNONE, true},
  };
  for (const Case& c : cases) {
    FHANDLE first = fsOpen(vm, "t.dbf", c.first);
    ASSERT_NE(first, FS_ERROR);
    FHANDLE second = fsOpen(vm, "T.DBF", c.second);
    EXPECT_EQ(second != FS_ERROR, c.opens) << std::hex << c.first << " " << c.second;
    if (second != FS_ERROR) {
      fsClose(vm, second);
    } else {
      EXPECT_EQ(fsError(vm), FS_SHARING_VIOLATION);
    }
    fsClose(vm, first);
  }
  FHANDLE held = fsOpen(vm, "t.dbf", FO_READ | FO_DENYNONE);
  EXPECT_FALSE(fsDelete(vm, "t.dbf"));
  EXPECT_EQ(fsError(vm), FS_SHARING_VIOLATION);
  fsClose(vm, held);
  EXPECT_TRUE(fsDelete(vm, "t.dbf"));
}

// The exit status of a second process that opens `name` with `mode`: 0 when
// it opened it, else the error cell.
int openInAnotherProcess(VMEngine* vm, const char* name, uint16_t mode) {
  pid_t child = fork();
  if (child == 0) {
    FHANDLE h = fsOpen(vm, name, mode);
    _exit(h == FS_ERROR ? fsError(vm) : 0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(FileLayerTest, AnExclusiveOpenHoldsOffASecondProcessUntilItIsClosed) {
  dir.write("table.dbf", "x");
  FHANDLE held = fsOpen(vm, "table.dbf", FO_READWRITE | FO_EXCLUSIVE);
  ASSERT_NE(held, FS_ERROR);
  EXPECT_EQ(openInAnotherProcess(vm, "TABLE.DBF", FO_READ | FO_DENYNONE), FS_SHARING_VIOLATION);
  fsClose(vm, held);
  EXPECT_EQ(openInAnotherProcess(vm, "TABLE.DBF", FO_READ | FO_DENYNONE), 0);
}

TEST_F(FileLayerTest, EveryDriveKeepsItsCurrentDirectory) {
  std::filesystem::create_directories("d/Sub");
  std::filesystem::create_directory("here");
  std::string root = (dir.path() / "d").string();
  ScopedVariable drives("KOVO_DRIVES", "D=" + root);
  std::string home = dir.path().string();
  ASSERT_TRUE(fsChDir(vm, "HERE"));
  EXPECT_EQ(std::filesystem::current_path(), dir.path() / "here");
  EXPECT_EQ(fsCurDrv(vm), 2);
  ASSERT_TRUE(fsChDir(vm, "D:\\sub"));  // another drive's directory: no move yet
  EXPECT_EQ(std::filesystem::current_path(), dir.path() / "here");
  EXPECT_STREQ(fsCurDir(vm, 4), "Sub");
  EXPECT_EQ(fsChDrv(vm, 3), 0);
  EXPECT_EQ(fsCurDrv(vm), 3);
  EXPECT_EQ(std::filesystem::current_path(), dir.path() / "d" / "Sub");
  EXPECT_STREQ(fsCurDir(vm, 0), "Sub");
  std::string cHere = (dir.path() / "here").string().substr(1);
  for (char& c : cHere)
    if (c == '/') c = '\\';
  EXPECT_EQ(fsCurDir(vm, 3), cHere);  // C's directory is remembered
  EXPECT_EQ(fsChDrv(vm, 2), 0);
  EXPECT_EQ(std::filesystem::current_path(), dir.path() / "here");
  EXPECT_NE(fsChDrv(vm, 16), 0);  // Q is not mapped
  EXPECT_FALSE(fsChDir(vm, "nowhere"));
  EXPECT_EQ(fsError(vm), FS_PATH_NOT_FOUND);
}

TEST_F(FileLayerTest, SearchesFollowTheDosAttributeRuleInNameOrder) {
  std::filesystem::create_directory("Dir");
  for (const char* name : {"b.txt", "A.TXT", "c.dat", ".hidden.txt"})
    dir.write(name, "12345");
  std::string names;
  for (FileFindInfo* f = fsFindFirst(vm, "*.txt", 0); f;) {
    names += std::string(f->name) + " ";
    if (!fsFindNext(vm, f)) {
      fsFindClose(vm, f);
      break;
    }
  }
  EXPECT_EQ(names, "A.TXT b.txt ");
  FileFindInfo* f = fsFindFirst(vm, "*.*", FA_DIRECTORY | FA_HIDDEN);
  ASSERT_NE(f, nullptr);
  EXPECT_STREQ(f->name, ".");
  EXPECT_EQ(f->attributes, FA_DIRECTORY);
  // A search left open is released with its context.
  EXPECT_EQ(fsFindFirst(vm, "*.none", 0), nullptr);
  EXPECT_EQ(fsError(vm), FS_FILE_NOT_FOUND);
  EXPECT_EQ(fsFindFirst(vm, "nodir\\*.*", 0), nullptr);
  EXPECT_EQ(fsError(vm), FS_PATH_NOT_FOUND);
}

TEST_F(FileLayerTest, NamesSplitAndMergeInTheWindowsForm) {
  struct Case {
    const char* name;
    const char* drive;
    const char* path;
    const char* base;
    const char* extension;
  };
  const Case cases[] = {
      {"C:\\dir\\file.dbf", "C:", "C:\\dir\\", "file", ".dbf"},
      {"d:name.tar.gz", "d:", "d:", "name.tar", ".gz"},
      {"a/b\\c", "", "a/b\\", "c", ""},
      {"noext", "", "", "noext", ""},
      {"dir.x\\name", "", "dir.x\\", "name", ""},
  };
  for (const Case& c : cases) {
    HB_FNAME* parts = fsFNameSplit(vm, c.name);
    EXPECT_STREQ(parts->szDrive, c.drive);
    EXPECT_STREQ(parts->szPath, c.path);
    EXPECT_STREQ(parts->szName, c.base);
    EXPECT_STREQ(parts->szExtension, c.extension);
    char merged[260];
    EXPECT_STREQ(fsFNameMerge(vm, merged, parts), c.name);
    vmFree(vm, parts);
  }
  HB_FNAME parts = {};
  std::strcpy(parts.szPath, "C:\\dir");
  std::strcpy(parts.szName, "f");
  char merged[260];
  EXPECT_STREQ(fsFNameMerge(vm, merged, &parts), "C:\\dir\\f");
}

}  // namespace
