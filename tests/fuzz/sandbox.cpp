#include "sandbox.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace fs = std::filesystem;

namespace {

// The kernel's Landlock interface is stable; the rights added in its later
// versions are spelled here, for system headers older than the kernel.
constexpr uint64_t ACCESS_FS_REFER = 1ull << 13;     // version 2
constexpr uint64_t ACCESS_FS_TRUNCATE = 1ull << 14;  // version 3
constexpr uint64_t ACCESS_NET_BIND_TCP = 1ull << 0;  // version 4
constexpr uint64_t ACCESS_NET_CONNECT_TCP = 1ull << 1;

struct RulesetAttributes {
  uint64_t handledAccessFs;
  uint64_t handledAccessNet;  // version 4
};

fs::path runDirectory;
// The process's standard streams as the run began, kept on other descriptors:
// the calls under test may close or replace them.
int standardStreams[3] = {-1, -1, -1};
constexpr int SAVED_STREAMS_FROM = 100;

// No file of a run grows beyond this: a write past it fails as on a full disk.
constexpr rlim_t LARGEST_FILE = rlim_t{64} << 20;
// The registry store's files stay from input to input, as its connection does.
constexpr const char* STORE_PREFIX = "registry.db";

void removeRunDirectory() {
  std::error_code ignored;
  fs::current_path("/", ignored);
  fs::remove_all(runDirectory, ignored);
}

// Options whose value is a path, or a comma-separated list of paths.
const char* const PATH_OPTIONS[] = {
    "-artifact_prefix=", "-exact_artifact_path=", "-dict=", "-seed_inputs="};

std::string absoluteList(const std::string& list) {
  std::string result;
  size_t start = 0;
  while (start <= list.size()) {
    size_t comma = list.find(',', start);
    if (comma == std::string::npos) comma = list.size();
    std::string path = list.substr(start, comma - start);
    if (!result.empty()) result += ',';
    // A prefix ending in a slash stays one.
    result += path.empty() || path[0] == '/' ? path : (fs::current_path() / path).string();
    start = comma + 1;
  }
  return result;
}

void makePathsAbsolute(int argc, char** argv) {
  for (int i = 1; i < argc; i++) {
    std::string argument = argv[i];
    std::string rewritten;
    if (argument[0] != '-') rewritten = absoluteList(argument);
    for (const char* option : PATH_OPTIONS) {
      if (argument.rfind(option, 0) == 0) {
        rewritten = option + absoluteList(argument.substr(std::strlen(option)));
      }
    }
    // Kept for the life of the process, as argv is.
    if (!rewritten.empty()) argv[i] = strdup(rewritten.c_str());
  }
}

// The folders libFuzzer writes to: that of the artifact prefix (the current
// directory by default) and the corpus folders among the arguments.
std::vector<fs::path> fuzzerFolders(int argc, char** argv) {
  std::vector<fs::path> folders;
  fs::path artifacts = fs::current_path();
  for (int i = 1; i < argc; i++) {
    std::string argument = argv[i];
    for (const char* option : {"-artifact_prefix=", "-exact_artifact_path="}) {
      if (argument.rfind(option, 0) == 0) {
        fs::path prefix = argument.substr(std::strlen(option));
        artifacts = fs::absolute(prefix).parent_path();
      }
    }
    std::error_code error;
    if (argument[0] != '-' && fs::is_directory(argument, error)) {
      folders.push_back(fs::absolute(argument));
    }
  }
  folders.push_back(artifacts);
  return folders;
}

uint64_t writeRights(int abi) {
  uint64_t rights = LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_REMOVE_DIR |
                    LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_CHAR |
                    LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
                    LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO |
                    LANDLOCK_ACCESS_FS_MAKE_BLOCK | LANDLOCK_ACCESS_FS_MAKE_SYM;
  if (abi >= 2) rights |= ACCESS_FS_REFER;
  if (abi >= 3) rights |= ACCESS_FS_TRUNCATE;
  return rights;
}

bool allowBeneath(int ruleset, const fs::path& folder, uint64_t rights) {
  int fd = open(folder.c_str(), O_PATH | O_CLOEXEC);
  if (fd < 0) return false;
  landlock_path_beneath_attr rule{rights, fd};
  bool added = syscall(SYS_landlock_add_rule, ruleset, LANDLOCK_RULE_PATH_BENEATH, &rule, 0) == 0;
  close(fd);
  return added;
}

bool restrictWrites(const std::vector<fs::path>& writable) {
  long abi = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  if (abi < 1) return false;
  RulesetAttributes attributes{writeRights(static_cast<int>(abi)), 0};
  // From the fourth version on, network access can be refused as well: no
  // rule for it, so no TCP port can be bound or connected to.
  size_t size = sizeof attributes.handledAccessFs;
  if (abi >= 4) {
    attributes.handledAccessNet = ACCESS_NET_BIND_TCP | ACCESS_NET_CONNECT_TCP;
    size = sizeof attributes;
  }
  int ruleset = static_cast<int>(syscall(SYS_landlock_create_ruleset, &attributes, size, 0));
  if (ruleset < 0) return false;
  bool ok = true;
  for (const fs::path& folder : writable)
    ok = ok && allowBeneath(ruleset, folder, attributes.handledAccessFs);
  ok = ok && allowBeneath(ruleset, "/dev/null", LANDLOCK_ACCESS_FS_WRITE_FILE);
  ok = ok && prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
       syscall(SYS_landlock_restrict_self, ruleset, 0) == 0;
  close(ruleset);
  return ok;
}

// The open descriptors above the standard streams whose target (a path, or
// "pipe:[…]" and the like) `wanted` accepts.
template <typename Wanted>
std::vector<int> descriptorsWhere(Wanted wanted) {
  std::vector<int> found;
  std::error_code ignored;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd", ignored)) {
    int fd = std::atoi(entry.path().filename().c_str());
    if (fd > 2 && wanted(fs::read_symlink(entry.path(), ignored).string())) found.push_back(fd);
  }
  return found;
}

bool isStoreFile(std::string_view name) {
  return name.starts_with(STORE_PREFIX);
}

// Pipes, sockets and terminals the process was started with: a read of one
// that the calls under test may make would wait for ever.
void closeInheritedStreams() {
  std::vector<int> streams = descriptorsWhere([](const std::string& target) {
    return target.starts_with("pipe:") || target.starts_with("socket:") ||
           target.starts_with("/dev/pts") || target.starts_with("/dev/tty");
  });
  for (int fd : streams)
    close(fd);
}

// The low descriptors are held on /dev/null for the whole run, so that the
// pipes the sanitizers open later (their symbolizer's) get numbers above them:
// the small handle numbers that inputs make up then read nothing and wait for
// nothing.
void holdLowDescriptors() {
  // Well above the numbers inputs make up, and half the process's allowance at most.
  rlimit allowance{};
  getrlimit(RLIMIT_NOFILE, &allowance);
  const int heldBelow = static_cast<int>(std::min<rlim_t>(1024, allowance.rlim_cur / 2));
  for (;;) {
    int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (fd < 0) return;
    if (fd >= heldBelow) {
      close(fd);
      return;
    }
  }
}

}  // namespace

void enterSandbox(int argc, char** argv) {
  closeInheritedStreams();
  holdLowDescriptors();
  makePathsAbsolute(argc, argv);
  std::vector<fs::path> writable = fuzzerFolders(argc, argv);
  std::string pattern = (fs::temp_directory_path() / "kovo-fuzz-XXXXXX").string();
  if (!mkdtemp(pattern.data())) {
    std::perror("mkdtemp");
    std::exit(2);
  }
  runDirectory = pattern;
  std::atexit(removeRunDirectory);
  fs::current_path(runDirectory);
  for (const char* name : {"HOME", "TEMP", "TMP", "TMPDIR"})
    setenv(name, runDirectory.c_str(), 1);
  setenv("KOVO_REGISTRY", (runDirectory / "registry.db").c_str(), 1);
  writable.push_back(runDirectory);
  for (int stream = 0; stream < 3; stream++)
    standardStreams[stream] = fcntl(stream, F_DUPFD_CLOEXEC, SAVED_STREAMS_FROM);
  rlimit fileSize{LARGEST_FILE, LARGEST_FILE};
  setrlimit(RLIMIT_FSIZE, &fileSize);
  if (!restrictWrites(writable)) {
    std::fprintf(stderr,
                 "sandbox: this kernel offers no Landlock; the run is redirected into %s "
                 "but not confined to it\n",
                 runDirectory.c_str());
  }
}

void startInput() {
  // libFuzzer takes the signal of a file grown too large for itself once it has
  // read its options; a write past the limit must fail as on a full disk instead.
  static const bool writesFailPastLimit = std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR;
  (void)writesFailPastLimit;
  for (int stream = 0; stream < 3; stream++)
    if (standardStreams[stream] >= 0) dup2(standardStreams[stream], stream);
}

std::vector<int> filesLeftOpen() {
  const std::string prefix = runDirectory.string() + "/";
  return descriptorsWhere([&prefix](const std::string& target) {
    return target.starts_with(prefix) &&
           !isStoreFile(std::string_view(target).substr(prefix.size()));
  });
}

void clearRunDirectory() {
  std::error_code ignored;
  for (const fs::directory_entry& entry : fs::directory_iterator(runDirectory, ignored)) {
    if (isStoreFile(entry.path().filename().string())) continue;
    fs::remove_all(entry.path(), ignored);
  }
  holdLowDescriptors();  // again where the calls closed one
}
