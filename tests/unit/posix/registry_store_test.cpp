// The registry store under crashes and concurrent processes, the files it
// refuses, and the regedit file reader and writer.
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "kovo/host_embed.h"
#include "os/cp1251.h"
#include "os/reg_file.h"
#include "os/registry.h"

namespace {

void onReport(VMEngine*, void* cargo, const char* text) {
  static_cast<std::vector<std::string>*>(cargo)->emplace_back(text);
}

const HostEvents REPORT_EVENTS = {nullptr, nullptr, nullptr, onReport,
                                  nullptr, nullptr, nullptr, nullptr};

// A store of its own in a temporary directory, and a context whose reports are kept.
class RegistryStore : public ::testing::Test {
 public:
  void SetUp() override {
    char pattern[] = "/tmp/kovo-registry-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir_ = pattern;
    path_ = dir_ + "/store/registry.db";
    setenv("KOVO_REGISTRY", path_.c_str(), 1);
    VMConfig config{&REPORT_EVENTS, &reports, false};
    vm = vmCreate(&config);
  }
  void TearDown() override {
    vmDestroy(vm);
    unsetenv("KOVO_REGISTRY");
    std::filesystem::remove_all(dir_);
  }

  // The value of a name under HKEY_CURRENT_USER\<key>, "" when there is none.
  std::string valueOf(uint32_t key, const std::string& name) {
    uint32_t type = 0;
    uint32_t size = 0;
    if (osRegQueryValue(vm, key, name.c_str(), &type, nullptr, &size) != REG_OK) return "";
    std::string data(size, '\0');
    EXPECT_EQ(osRegQueryValue(vm, key, name.c_str(), &type,
                              reinterpret_cast<unsigned char*>(data.data()), &size),
              REG_OK);
    return data;
  }

  std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

  VMEngine* vm = nullptr;
  std::vector<std::string> reports;

 protected:
  std::string dir_;
  std::string path_;
};

int32_t setText(VMEngine* vm, uint32_t key, const std::string& name, const std::string& text) {
  return osRegSetValue(vm, key, name.c_str(), REG_TYPE_SZ,
                       reinterpret_cast<const unsigned char*>(text.c_str()),
                       static_cast<uint32_t>(text.size() + 1));
}

std::string valueText(int i) {
  return "value number " + std::to_string(i) + std::string(i % 50, 'x');
}

// A child that writes values without end and tells the parent, over a
// pipe, each index whose call has returned.
[[noreturn]] void writeForever(int start, int pipeOut) {
  VMConfig config{nullptr, nullptr, false};
  VMEngine* vm = vmCreate(&config);
  uint32_t key = 0;
  if (osRegCreateKey(vm, HKEY_CURRENT_USER_KEY, "Durable", &key) != REG_OK) _exit(2);
  for (int i = start;; i++) {
    if (setText(vm, key, "v" + std::to_string(i), valueText(i)) != REG_OK) _exit(3);
    if (write(pipeOut, &i, sizeof i) != sizeof i) _exit(4);
  }
}

TEST_F(RegistryStore, ValuesWhoseCallReturnedSurviveTheWriterBeingKilled) {
  constexpr int ROUNDS = 30;
  std::mt19937 random(20260124);
  int next = 0;
  for (int round = 0; round < ROUNDS; round++) {
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      close(fds[0]);
      writeForever(next, fds[1]);
    }
    close(fds[1]);
    std::this_thread::sleep_for(std::chrono::microseconds(2000 + random() % 40000));
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the writer stopped by itself: " << status;
    int acknowledged;
    while (read(fds[0], &acknowledged, sizeof acknowledged) == sizeof acknowledged)
      next = acknowledged + 1;
    close(fds[0]);
  }
  ASSERT_GT(next, ROUNDS) << "too few writes returned to tell anything";

  uint32_t key = 0;
  ASSERT_EQ(osRegOpenKey(vm, HKEY_CURRENT_USER_KEY, "Durable", REG_KEY_ALL_ACCESS, &key), REG_OK);
  for (int i = 0; i < next; i++)
    ASSERT_EQ(valueOf(key, "v" + std::to_string(i)), valueText(i) + '\0') << "value " << i;
  osRegCloseKey(vm, key);

  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open_v2(path_.c_str(), &db, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
  sqlite3_stmt* check = nullptr;
  ASSERT_EQ(sqlite3_prepare_v2(db, "PRAGMA integrity_check", -1, &check, nullptr), SQLITE_OK);
  ASSERT_EQ(sqlite3_step(check), SQLITE_ROW);
  EXPECT_STREQ(reinterpret_cast<const char*>(sqlite3_column_text(check, 0)), "ok");
  sqlite3_finalize(check);
  sqlite3_close(db);
  EXPECT_TRUE(reports.empty());
}

// Writes keys and values of its own and lists the shared key's sub-keys and
// values throughout; exits 0 only when no call failed and nothing was reported.
[[noreturn]] void writeAndList(int process) {
  std::vector<std::string> reports;
  VMConfig config{&REPORT_EVENTS, &reports, false};
  VMEngine* vm = vmCreate(&config);
  uint32_t shared = 0;
  if (osRegCreateKey(vm, HKEY_CURRENT_USER_KEY, "Shared", &shared) != REG_OK) _exit(2);
  for (int i = 0; i < 150; i++) {
    std::string name = "P" + std::to_string(process) + "K" + std::to_string(i);
    uint32_t key = 0;
    if (osRegCreateKey(vm, shared, name.c_str(), &key) != REG_OK) _exit(3);
    if (setText(vm, key, "n", name) != REG_OK || setText(vm, shared, name, name) != REG_OK) {
      _exit(4);
    }
    osRegCloseKey(vm, key);
    char found[256];
    for (uint32_t index = 0;; index++) {
      uint32_t length = sizeof found;
      int32_t code = osRegEnumKey(vm, shared, index, found, &length, nullptr, nullptr);
      if (code == REG_ERROR_NO_MORE_ITEMS) break;
      if (code != REG_OK) _exit(5);
    }
  }
  _exit(reports.empty() ? 0 : 6);
}

TEST_F(RegistryStore, TwoProcessesWriteAndListAtOnceWithoutABusyError) {
  pid_t children[2];
  for (int i = 0; i < 2; i++) {
    children[i] = fork();
    ASSERT_GE(children[i], 0);
    if (children[i] == 0) writeAndList(i);
  }
  for (pid_t child : children) {
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "status " << status;
  }
  uint32_t shared = 0;
  ASSERT_EQ(osRegOpenKey(vm, HKEY_CURRENT_USER_KEY, "Shared", REG_KEY_ALL_ACCESS, &shared), REG_OK);
  uint32_t count = 0;
  char name[256];
  for (uint32_t length = sizeof name;
       osRegEnumKey(vm, shared, count, name, &length, nullptr, nullptr) == REG_OK;
       length = sizeof name)
    count++;
  EXPECT_EQ(count, 300u);
  EXPECT_EQ(valueOf(shared, "p1k149"), std::string("P1K149") + '\0');
}

TEST_F(RegistryStore, ThreadsShareTheTableOfOpenKeys) {
  std::vector<std::thread> threads;
  std::atomic<int> failures{0};
  for (int t = 0; t < 4; t++) {
    threads.emplace_back([t, &failures] {
      VMConfig config{nullptr, nullptr, false};
      VMEngine* own = vmCreate(&config);
      for (int i = 0; i < 200; i++) {
        uint32_t key = 0;
        std::string name = "T" + std::to_string(t);
        if (osRegCreateKey(own, HKEY_CURRENT_USER_KEY, name.c_str(), &key) != REG_OK ||
            setText(own, key, "i", std::to_string(i)) != REG_OK ||
            osRegCloseKey(own, key) != REG_OK) {
          failures++;
        }
      }
      vmDestroy(own);
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(failures, 0);
  uint32_t key = 0;
  ASSERT_EQ(osRegCreateKey(vm, HKEY_CURRENT_USER_KEY, "T3", &key), REG_OK);
  EXPECT_EQ(valueOf(key, "i"), std::string("199") + '\0');
}

TEST_F(RegistryStore, AnotherProgramsDatabaseIsRefusedAndLeftAsItIs) {
  std::filesystem::create_directories(dir_ + "/store");
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open(path_.c_str(), &db), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(db, "CREATE TABLE keys(x); INSERT INTO keys VALUES(1)", nullptr, nullptr,
                         nullptr),
            SQLITE_OK);
  sqlite3_close(db);
  std::string before = readFile(path_);
  uint32_t key = 0;
  EXPECT_EQ(osRegCreateKey(vm, HKEY_CURRENT_USER_KEY, "A", &key), REG_ERROR_BADDB);
  ASSERT_EQ(reports.size(), 1u);
  EXPECT_NE(reports[0].find("a database of another program"), std::string::npos) << reports[0];
  EXPECT_EQ(readFile(path_), before);
}

TEST_F(RegistryStore, ABatchThatFailsLeavesNothingBehind) {
  int32_t code = osRegBatch(
      vm,
      [](VMEngine* vm, void*) -> int32_t {
        uint32_t key = 0;
        osRegCreateKey(vm, HKEY_CURRENT_USER_KEY, "Kept", &key);
        setText(vm, key, "a", "1");
        osRegCloseKey(vm, key);
        return REG_ERROR_ACCESS_DENIED;
      },
      nullptr);
  EXPECT_EQ(code, REG_ERROR_ACCESS_DENIED);
  uint32_t key = 0;
  EXPECT_EQ(osRegOpenKey(vm, HKEY_CURRENT_USER_KEY, "Kept", REG_KEY_ALL_ACCESS, &key),
            REG_ERROR_FILE_NOT_FOUND);
}

TEST_F(RegistryStore, WithoutKovoRegistryTheStoreIsTheUsersDataFolder) {
  // Each a setting of the variables, and where the store must then be made.
  const std::pair<std::pair<const char*, const char*>, const char*> cases[] = {
      {{"XDG_DATA_HOME", "/xdg"}, "/xdg/kovo/registry.db"},
      {{"HOME", "/home"}, "/home/.local/share/kovo/registry.db"},
  };
  const char* saved[] = {std::getenv("XDG_DATA_HOME"), std::getenv("HOME")};
  std::string savedValues[] = {saved[0] ? saved[0] : "", saved[1] ? saved[1] : ""};
  unsetenv("KOVO_REGISTRY");
  for (const auto& [variable, expected] : cases) {
    unsetenv("XDG_DATA_HOME");
    setenv(variable.first, (dir_ + variable.second).c_str(), 1);
    uint32_t key = 0;
    EXPECT_EQ(osRegCreateKey(vm, HKEY_CURRENT_USER_KEY, "Made", &key), REG_OK);
    EXPECT_TRUE(std::filesystem::exists(dir_ + expected)) << expected;
  }
  // Back to this test's own store before the user's variables come back.
  setenv("KOVO_REGISTRY", path_.c_str(), 1);
  uint32_t key = 0;
  osRegCreateKey(vm, HKEY_CURRENT_USER_KEY, "Back", &key);
  for (int i = 0; i < 2; i++) {
    const char* name = i == 0 ? "XDG_DATA_HOME" : "HOME";
    if (saved[i]) {
      setenv(name, savedValues[i].c_str(), 1);
    } else {
      unsetenv(name);
    }
  }
}

TEST_F(RegistryStore, FailuresCarryWin32sCodes) {
  uint32_t parent = 0;
  uint32_t child = 0;
  uint32_t reader = 0;
  ASSERT_EQ(osRegCreateKey(vm, HKEY_CURRENT_USER_KEY, "P\\C", &child), REG_OK);
  ASSERT_EQ(osRegOpenKey(vm, HKEY_CURRENT_USER_KEY, "P", REG_KEY_ALL_ACCESS, &parent), REG_OK);
  ASSERT_EQ(osRegOpenKey(vm, HKEY_CURRENT_USER_KEY, "P", 0x20019, &reader), REG_OK);
  char name[4];
  uint32_t length = sizeof name;
  uint32_t type = 0;
  uint32_t size = 0;
  ASSERT_EQ(setText(vm, child, "v", "0123456789"), REG_OK);
  unsigned char small[4];
  size = sizeof small;
  const std::pair<int32_t, int32_t> cases[] = {
      {osRegDeleteKey(vm, HKEY_CURRENT_USER_KEY, "P"), REG_ERROR_ACCESS_DENIED},
      {osRegDeleteKey(vm, HKEY_CURRENT_USER_KEY, "Q"), REG_ERROR_FILE_NOT_FOUND},
      {setText(vm, reader, "v", "x"), REG_ERROR_ACCESS_DENIED},
      {osRegDeleteValue(vm, reader, "v"), REG_ERROR_ACCESS_DENIED},
      {osRegDeleteValue(vm, child, "none"), REG_ERROR_FILE_NOT_FOUND},
      {osRegQueryValue(vm, child, "v", &type, small, &size), REG_ERROR_MORE_DATA},
      {static_cast<int32_t>(size), 11},
      {osRegEnumKey(vm, parent, 1, name, &length, nullptr, nullptr), REG_ERROR_NO_MORE_ITEMS},
      {osRegCloseKey(vm, 12345), REG_ERROR_INVALID_HANDLE},
      {osRegCreateKey(vm, 0x80000004u, "A", &child), REG_ERROR_INVALID_HANDLE},
  };
  for (size_t i = 0; i < std::size(cases); i++)
    EXPECT_EQ(cases[i].first, cases[i].second) << "case " << i;
  length = 1;
  EXPECT_EQ(osRegEnumKey(vm, parent, 0, name, &length, nullptr, nullptr), REG_ERROR_MORE_DATA);
}

// ---- The character map and the case of names ---------------------------------------

TEST(Cp1251, EveryByteGoesToUnicodeAndBack) {
  for (int byte = 0; byte < 256; byte++) {
    EXPECT_EQ(cp1251FromUnicode(cp1251ToUnicode(static_cast<unsigned char>(byte))), byte) << byte;
  }
  EXPECT_EQ(cp1251FromUnicode(0x65E5), -1);
  EXPECT_EQ(cp1251FromUnicode(0x00E9), -1);
}

TEST(Cp1251, UpperCaseCoversEveryCyrillicLetterAndNothingElse) {
  const std::pair<unsigned char, unsigned char> cases[] = {
      {'a', 'A'},   {'z', 'Z'},   {'_', '_'},   {0xE0, 0xC0}, {0xFF, 0xDF}, {0xB8, 0xA8},
      {0xB3, 0xB2}, {0xBF, 0xAF}, {0xBA, 0xAA}, {0xB4, 0xA5}, {0xA2, 0xA1}, {0xBC, 0xA3},
      {0xBE, 0xBD}, {0x83, 0x81}, {0x90, 0x80}, {0x9A, 0x8A}, {0x9C, 0x8C}, {0x9D, 0x8D},
      {0x9E, 0x8E}, {0x9F, 0x8F}, {0xB5, 0xB5}, {0xC0, 0xC0}, {0x98, 0x98}, {0xE9, 0xC9},
  };
  for (auto [lower, upper] : cases)
    EXPECT_EQ(cp1251Upper(lower), upper) << static_cast<int>(lower);
}

// ---- regedit files ---------------------------------------------------------------------

TEST(RegFile, MalformedLinesAreNamedByTheirLine) {
  const std::pair<const char*, const char*> cases[] = {
      {"", "line 1: an ANSI file must begin with \"REGEDIT4\""},
      {"REGEDIT4\n[HKEY_NOWHERE\\A]\n", "line 2: \"HKEY_NOWHERE\" is no root key"},
      {"REGEDIT4\n[HKCU\\A\n", "line 2: a key without its closing \"]\""},
      {"REGEDIT4\n[HKCU\\A]\n\"a\"=\"b\n", "line 3: a text without its closing quote"},
      {"REGEDIT4\n[HKCU\\A]\n\"a\"=\"b\" c\n", "line 3: something after the closing quote"},
      {"REGEDIT4\n[HKCU\\A]\n\"a\"=hex:1\n",
       "line 3: a byte of hex data that is not two hex digits"},
      {"REGEDIT4\n[HKCU\\A]\n\"a\"=hex:0102\n", "line 3: hex bytes must be separated by commas"},
      {"REGEDIT4\n[HKCU\\A]\n\"a\"=hex(x):01\n", "line 3: hex( needs a type in hex digits"},
      {"REGEDIT4\n[HKCU\\A]\n\"a\"=dword:123456789\n",
       "line 3: dword: needs one to eight hex digits"},
      {"REGEDIT4\n[HKCU\\A]\n\"a\"=str:x\n",
       "line 3: a value that is neither text, dword:, hex: nor -"},
      {"REGEDIT4\n[HKCU\\A]\n\"a\"\n", "line 3: a value name without \"=\""},
      {"REGEDIT4\n[HKCU\\A]\nname=1\n", "line 3: neither a key, a value nor a comment"},
      // a continued line is reported where it began
      {"REGEDIT4\n[HKCU\\A]\n\"a\"=hex:01,\\\n  02,\\\n  zz\n",
       "line 3: a byte of hex data that is not two hex digits"},
      {"REGEDIT4\n\n\"a\"=\"b\"\n", "line 3: a value before the first key"},
  };
  for (auto [text, message] : cases) {
    std::vector<RegOperation> operations;
    std::string error;
    EXPECT_FALSE(regParse(text, &operations, &error)) << text;
    EXPECT_EQ(error, message) << text;
  }
}

TEST(RegFile, ValuesOfEveryFormReadBackFromTheirOwnText) {
  // Each a value that one form of the text must carry exactly.
  const RegValue values[] = {
      {"", REG_TYPE_SZ, std::string("default\0", 8)},
      {"quote \" and \\", REG_TYPE_SZ, std::string("C:\\dir \"x\"\0", 11)},
      {"no zero", REG_TYPE_SZ, "abc"},
      {"inner zero", REG_TYPE_SZ, std::string("a\0b\0", 4)},
      {"line break", REG_TYPE_SZ, std::string("a\r\nb\0", 5)},
      {"empty", REG_TYPE_SZ, ""},
      {"\xCF\xF0\xE8\x98", REG_TYPE_EXPAND_SZ, std::string("%\xC4\xE8\xF0%\0", 6)},
      {"multi", REG_TYPE_MULTI_SZ, std::string("\xE0\0b\0\0", 5)},
      {"dword", REG_TYPE_DWORD, std::string("\x78\x56\x34\x12", 4)},
      {"short dword", REG_TYPE_DWORD, "\x01"},
      {"binary", REG_TYPE_BINARY, std::string(100, '\xAB')},
      {"qword", REG_TYPE_QWORD, std::string("\1\0\0\0\0\0\0\0", 8)},
      {"odd type", 0xFFFFFFFF, "\xDE\xAD"},
  };
  RegKeyText key{"HKEY_CURRENT_USER\\Software\\\xCA\xEE\xE2\xEE", {}};
  for (const RegValue& value : values)
    key.values.push_back(value);
  std::string file = regFormat({key, {"HKEY_LOCAL_MACHINE\\Empty", {}}});
  ASSERT_EQ(file.compare(0, 2, "\xFF\xFE"), 0);

  std::vector<RegOperation> operations;
  std::string error;
  ASSERT_TRUE(regParse(file, &operations, &error)) << error;
  ASSERT_EQ(operations.size(), std::size(values) + 2);
  EXPECT_EQ(operations[0].kind, RegOperation::CREATE_KEY);
  EXPECT_EQ(operations[0].root, HKEY_CURRENT_USER_KEY);
  EXPECT_EQ(operations[0].path, "Software\\\xCA\xEE\xE2\xEE");
  for (size_t i = 0; i < std::size(values); i++) {
    const RegOperation& read = operations[i + 1];
    EXPECT_EQ(read.kind, RegOperation::SET_VALUE);
    EXPECT_EQ(read.name, values[i].name);
    EXPECT_EQ(read.type, values[i].type) << values[i].name;
    EXPECT_EQ(read.data, values[i].data) << values[i].name;
  }
  EXPECT_EQ(operations.back().root, HKEY_LOCAL_MACHINE_KEY);
}

TEST(RegFile, LongHexLinesAreContinuedAsRegeditDoes) {
  std::string file = regFormat({{"HKEY_USERS\\K", {{"b", REG_TYPE_BINARY, std::string(60, 'A')}}}});
  std::string text;
  for (size_t i = 2; i < file.size(); i += 2)
    text.push_back(file[i]);
  std::string first = "\"b\"=hex:";
  for (int i = 0; i < 23; i++)
    first += "41,";
  std::string second = "  ";
  for (int i = 0; i < 25; i++)
    second += "41,";
  std::string last = "  41";
  for (int i = 1; i < 12; i++)
    last += ",41";
  EXPECT_NE(text.find(first + "\\\r\n" + second + "\\\r\n" + last + "\r\n\r\n"), std::string::npos)
      << text;
}

}  // namespace
