#include "name_space.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

#include "../file_context.h"

namespace {

bool isSeparator(char c) {
  return c == '/' || c == '\\';
}

int driveLetter(std::string_view name) {
  if (name.size() < 2 || name[1] != ':' || !std::isalpha(static_cast<unsigned char>(name[0])))
    return -1;
  return std::toupper(static_cast<unsigned char>(name[0])) - 'A';
}

// Appends one component to an absolute or relative path; ".." climbs, but
// never below `floor` characters (a drive's root) and, in a relative path,
// keeps the ".." that reach above the current directory.
void appendComponent(std::string* path, size_t floor, std::string_view component) {
  // Windows drops trailing dots and blanks: "NAME." is "NAME".
  if (component != "." && component != "..") {
    while (!component.empty() && (component.back() == '.' || component.back() == ' '))
      component.remove_suffix(1);
  }
  if (component.empty() || component == ".") return;
  if (component == "..") {
    bool relative = path->empty() || (*path)[0] != '/';
    if (!relative) {
      if (path->size() <= floor) return;
      size_t slash = path->rfind('/');
      path->resize(slash < floor ? floor : slash);
      if (path->empty()) *path = "/";
      return;
    }
    size_t slash = path->rfind('/');
    std::string_view last =
        std::string_view(*path).substr(slash == std::string::npos ? 0 : slash + 1);
    if (!path->empty() && last != "..") {
      path->resize(slash == std::string::npos ? 0 : slash);
      return;
    }
  }
  if (!path->empty() && path->back() != '/') *path += '/';
  path->append(component);
}

void appendComponents(std::string* path, size_t floor, std::string_view rest) {
  size_t start = 0;
  while (start <= rest.size()) {
    size_t end = start;
    while (end < rest.size() && !isSeparator(rest[end]))
      end++;
    appendComponent(path, floor, rest.substr(start, end - start));
    start = end + 1;
  }
}

std::string normalRoot(std::string_view text) {
  std::string root = "/";
  appendComponents(&root, 1, text);
  return root;
}

std::mutex stateMutex;
int preferredDrive = -1;                  // the drive fsChDrv chose last
std::string rememberedDirs[DRIVE_COUNT];  // current directories of the other drives

int currentDriveOf(const DriveTable& table, const std::string& cwd) {
  if (preferredDrive >= 0 && !table.roots[preferredDrive].empty() &&
      rootHolds(table.roots[preferredDrive], cwd))
    return preferredDrive;
  int holder = driveHolding(table, cwd);
  if (holder >= 0) return holder;
  return preferredDrive >= 0 ? preferredDrive : DRIVE_C;
}

std::string directoryOfLocked(const DriveTable& table, int drive, const std::string& cwd) {
  if (drive == currentDriveOf(table, cwd)) return cwd;
  const std::string& remembered = rememberedDirs[drive];
  if (!remembered.empty() && rootHolds(table.roots[drive], remembered)) return remembered;
  return table.roots[drive];
}

}  // namespace

DriveTable parseDrives(const char* text) {
  DriveTable table;
  table.roots[DRIVE_C] = "/";
  if (!text) return table;
  std::string_view rest(text);
  while (!rest.empty()) {
    size_t end = rest.find(';');
    std::string_view entry = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    if (entry.size() < 2 || entry[1] != '=' || !std::isalpha(static_cast<unsigned char>(entry[0])))
      continue;
    int drive = std::toupper(static_cast<unsigned char>(entry[0])) - 'A';
    std::string_view root = entry.substr(2);
    if (root.empty()) {
      table.roots[drive].clear();
    } else if (root[0] == '/') {
      table.roots[drive] = normalRoot(root);
    }
  }
  return table;
}

DriveTable currentDrives() {
  return parseDrives(std::getenv("KOVO_DRIVES"));
}

bool rootHolds(const std::string& root, std::string_view path) {
  if (root.empty() || path.empty() || path[0] != '/') return false;
  if (root == "/") return true;
  return path.substr(0, root.size()) == root &&
         (path.size() == root.size() || path[root.size()] == '/');
}

int driveHolding(const DriveTable& table, std::string_view path) {
  int best = -1;
  for (int drive = 0; drive < DRIVE_COUNT; drive++) {
    if (!rootHolds(table.roots[drive], path)) continue;
    if (best < 0 || table.roots[drive].size() > table.roots[best].size()) best = drive;
  }
  return best;
}

std::string directoryBelowRoot(const DriveTable& table, int drive, std::string_view path) {
  const std::string& root = table.roots[drive];
  std::string_view below = path.substr(root == "/" ? 1 : root.size());
  if (!below.empty() && below[0] == '/') below.remove_prefix(1);
  std::string out(below);
  for (char& c : out)
    if (c == '/') c = '\\';
  return out;
}

bool windowsForm(const DriveTable& table, std::string_view path, std::string* out) {
  int drive = driveHolding(table, path);
  if (drive < 0) return false;
  *out = std::string(1, static_cast<char>('A' + drive)) + ":\\" +
         directoryBelowRoot(table, drive, path);
  return true;
}

bool lexicalName(std::string_view name, const DriveState& state, LexicalName* out) {
  int drive = driveLetter(name);
  if (drive >= 0) name.remove_prefix(2);
  int onDrive = drive >= 0 ? drive : state.current;
  const std::string& root = state.table.roots[onDrive];
  out->drive = drive;
  out->fixed = 0;
  out->path.clear();
  bool rooted = !name.empty() && isSeparator(name[0]);
  if (rooted || drive >= 0) {
    if (root.empty()) return false;
    out->path = rooted ? root : state.directories[onDrive];
    out->fixed = root.size();
  } else if (name.find("..") != std::string_view::npos) {
    // ".." must not climb above the drive's root: resolve against the
    // current directory. Other relative names stay relative.
    if (!root.empty()) {
      out->path = state.directories[onDrive];
      out->fixed = root.size();
    }
  }
  appendComponents(&out->path, out->fixed, name);
  return true;
}

NameStatus matchLetterCase(std::string* path, size_t fixed) {
  struct stat info;
  if (path->empty()) return NameStatus::Missing;
  if (lstat(path->c_str(), &info) == 0) return NameStatus::Exists;
  std::string done = path->substr(0, fixed);
  std::vector<std::string_view> components;
  std::string_view rest = std::string_view(*path).substr(fixed);
  while (!rest.empty()) {
    size_t end = rest.find('/');
    if (end != 0) components.push_back(rest.substr(0, end));
    if (end == std::string_view::npos) break;
    rest.remove_prefix(end + 1);
  }
  std::string resolved;
  for (size_t i = 0; i < components.size(); i++) {
    std::string candidate = done;
    if (!candidate.empty() && candidate.back() != '/') candidate += '/';
    candidate.append(components[i]);
    bool last = i + 1 == components.size();
    if (lstat(candidate.c_str(), &info) == 0) {
      done = std::move(candidate);
      continue;
    }
    int matches = 0;
    std::string match;
    int failure = errno;
    if (failure == ENOENT) {
      DIR* dir = opendir(done.empty() ? "." : done.c_str());
      if (dir) {
        std::string wanted(components[i]);
        while (dirent* entry = readdir(dir)) {
          if (strcasecmp(entry->d_name, wanted.c_str()) != 0) continue;
          matches++;
          match = entry->d_name;
        }
        closedir(dir);
      }
    }
    if (matches != 1) {
      // Not there, or ambiguous: two names that differ in case alone are
      // never taken for each other.
      for (size_t j = i + 1; j < components.size(); j++) {
        candidate += '/';
        candidate.append(components[j]);
      }
      *path = std::move(candidate);
      return last && failure != ENOTDIR ? NameStatus::Missing : NameStatus::PathMissing;
    }
    if (!done.empty() && done.back() != '/') done += '/';
    done += match;
  }
  *path = std::move(done);
  return NameStatus::Exists;
}

std::string workingDirectory() {
  std::string buffer(256, '\0');
  for (;;) {
    if (getcwd(buffer.data(), buffer.size())) {
      buffer.resize(std::strlen(buffer.c_str()));
      return buffer;
    }
    if (errno != ERANGE) return {};
    buffer.resize(buffer.size() * 2);
  }
}

ResolvedName resolveName(const char* name) {
  std::string_view text(name);
  // Windows finds no path in an empty name: every call on one fails with 3.
  if (text.empty()) return {{}, NameStatus::PathMissing, -1};
  ResolvedName result{{}, NameStatus::NoDrive, driveLetter(text)};
  LexicalName lexical;
  bool mapped;
  if (result.drive < 0 && !text.empty() && !isSeparator(text[0]) &&
      text.find("..") == std::string_view::npos) {
    // A plain relative name: the operating system resolves it against the
    // current directory itself, which is therefore not asked for.
    lexical.path.clear();
    lexical.fixed = 0;
    appendComponents(&lexical.path, 0, text);
    if (lexical.path.empty()) lexical.path = ".";
    mapped = true;
  } else {
    DriveState state;
    state.table = currentDrives();
    std::string cwd = workingDirectory();
    {
      std::lock_guard<std::mutex> lock(stateMutex);
      state.current = currentDriveOf(state.table, cwd);
      for (int drive = 0; drive < DRIVE_COUNT; drive++)
        if (!state.table.roots[drive].empty())
          state.directories[drive] = directoryOfLocked(state.table, drive, cwd);
    }
    mapped = lexicalName(text, state, &lexical);
  }
  if (!mapped) return result;
  result.status = matchLetterCase(&lexical.path, lexical.fixed);
  result.path = std::move(lexical.path);
  return result;
}

int currentDrive() {
  DriveTable table = currentDrives();
  std::string cwd = workingDirectory();
  std::lock_guard<std::mutex> lock(stateMutex);
  return currentDriveOf(table, cwd);
}

std::string driveDirectory(int drive) {
  DriveTable table = currentDrives();
  if (drive < 0 || drive >= DRIVE_COUNT || table.roots[drive].empty()) return {};
  std::string cwd = workingDirectory();
  std::lock_guard<std::mutex> lock(stateMutex);
  return directoryOfLocked(table, drive, cwd);
}

uint32_t changeDrive(int drive) {
  DriveTable table = currentDrives();
  if (drive < 0 || drive >= DRIVE_COUNT || table.roots[drive].empty()) return FS_PATH_NOT_FOUND;
  std::string cwd = workingDirectory();
  std::lock_guard<std::mutex> lock(stateMutex);
  int current = currentDriveOf(table, cwd);
  if (drive != current) {
    std::string target = directoryOfLocked(table, drive, cwd);
    if (chdir(target.c_str()) != 0 && chdir(table.roots[drive].c_str()) != 0)
      return FS_PATH_NOT_FOUND;
    rememberedDirs[current] = cwd;
  }
  preferredDrive = drive;
  return 0;
}

uint32_t changeDirectory(const char* name) {
  ResolvedName target = resolveName(name);
  struct stat info;
  if (target.status != NameStatus::Exists || stat(target.path.c_str(), &info) != 0 ||
      !S_ISDIR(info.st_mode))
    return FS_PATH_NOT_FOUND;
  if (target.drive >= 0 && target.drive != currentDrive()) {
    std::lock_guard<std::mutex> lock(stateMutex);
    rememberedDirs[target.drive] = target.path;
    return 0;
  }
  if (chdir(target.path.c_str()) != 0)
    return errno == EACCES ? FS_ACCESS_DENIED : FS_PATH_NOT_FOUND;
  return 0;
}
