// The Windows name space's lexical step on any drive table and name: a name
// on a drive never leaves the drive's root, absolute results hold no "." or
// ".." and no empty component, and the Windows form of a result leads back to
// it. Any name matches itself as a wildcard mask.
#include <cstdlib>
#include <string>

#include "host/posix/name_space.h"
#include "kovo/host_files.h"

namespace {

void check(bool holds) {
  if (!holds) std::abort();
}

bool cleanAbsolute(const std::string& path) {
  if (path.empty() || path[0] != '/') return false;
  if (path == "/") return true;
  if (path.back() == '/') return false;
  size_t start = 1;
  while (start <= path.size()) {
    size_t end = path.find('/', start);
    if (end == std::string::npos) end = path.size();
    std::string component = path.substr(start, end - start);
    if (component.empty() || component == "." || component == "..") return false;
    start = end + 1;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string input(reinterpret_cast<const char*>(data), size);
  if (input.find('\0') != std::string::npos) return 0;
  size_t split = input.find('\n');
  std::string drives = split == std::string::npos ? "" : input.substr(0, split);
  std::string name = split == std::string::npos ? input : input.substr(split + 1);

  DriveState state;
  state.table = parseDrives(drives.c_str());
  state.current = DRIVE_C;
  for (int drive = 0; drive < DRIVE_COUNT; drive++) {
    const std::string& root = state.table.roots[drive];
    if (!root.empty()) state.directories[drive] = root == "/" ? "/work" : root + "/work";
    check(root.empty() || cleanAbsolute(root));
  }
  LexicalName out;
  if (lexicalName(name, state, &out) && !out.path.empty() && out.path[0] == '/') {
    check(cleanAbsolute(out.path));
    int drive = out.drive >= 0 ? out.drive : state.current;
    check(rootHolds(state.table.roots[drive], out.path));
    std::string form;
    check(windowsForm(state.table, out.path, &form));
    LexicalName again;
    check(lexicalName(form, state, &again) && again.path == out.path);
  }
  if (name.find_first_of("*?") == std::string::npos) check(fsMatchWild(name.c_str(), name.c_str()));
  fsMatchWild(name.c_str(), drives.c_str());
  return 0;
}
