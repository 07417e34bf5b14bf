// The directory listing of a search on POSIX: the mask's directory goes
// through the name space, names match as Windows wildcards, and a drive's
// root has no "." and "..".
#include <dirent.h>
#include <sys/stat.h>

#include <cstring>

#include "../file_listing.h"
#include "attributes.h"
#include "name_space.h"

namespace {

bool describe(const std::string& path, const char* name, FileFindInfo* out) {
  struct stat info;
  size_t length = std::strlen(name);
  if (length >= sizeof out->name || stat(path.c_str(), &info) != 0) return false;
  std::memcpy(out->name, name, length + 1);
  out->size = S_ISDIR(info.st_mode) ? 0 : info.st_size;
  out->attributes = attributesOf(path.c_str(), info);
  out->writeTime = info.st_mtime;
  return true;
}

std::string joined(const std::string& directory, const char* name) {
  if (directory.empty()) return name;
  return directory.back() == '/' ? directory + name : directory + "/" + name;
}

void addEntry(const std::string& path, const char* name, uint32_t asked,
              std::vector<FileFindInfo>* entries) {
  FileFindInfo found = {};
  if (describe(path, name, &found) && wantedEntry(found.attributes, asked))
    entries->push_back(found);
}

void listDirectory(const std::string& directory, const char* pattern, uint32_t asked, bool atRoot,
                   std::vector<FileFindInfo>* entries) {
  DIR* dir = opendir(directory.empty() ? "." : directory.c_str());
  if (!dir) return;
  while (dirent* entry = readdir(dir)) {
    bool dots = std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0;
    if ((dots && atRoot) || !fsMatchWild(entry->d_name, pattern)) continue;
    addEntry(joined(directory, entry->d_name), entry->d_name, asked, entries);
  }
  closedir(dir);
}

}  // namespace

uint32_t listEntries(const char* mask, uint32_t asked, std::vector<FileFindInfo>* entries) {
  const char* pattern = mask;
  for (const char* c = mask; *c; c++)
    if (*c == '\\' || *c == '/' || (*c == ':' && c == mask + 1)) pattern = c + 1;
  std::string directoryName(mask, static_cast<size_t>(pattern - mask));
  std::string directory;
  bool atRoot = false;
  if (!directoryName.empty()) {
    ResolvedName resolved = resolveName(directoryName.c_str());
    struct stat info;
    if (resolved.status != NameStatus::Exists || stat(resolved.path.c_str(), &info) != 0 ||
        !S_ISDIR(info.st_mode))
      return FS_PATH_NOT_FOUND;
    directory = resolved.path;
    DriveTable table = currentDrives();
    for (const std::string& root : table.roots)
      atRoot = atRoot || (!root.empty() && root == directory);
  }
  if (std::strpbrk(pattern, "*?")) {
    listDirectory(directory, pattern, asked, atRoot, entries);
  } else if (*pattern) {
    // One name: found through the name space, without a listing when it
    // exists as written.
    std::string path = joined(directory, pattern);
    if (matchLetterCase(&path, directory.size()) == NameStatus::Exists) {
      size_t nameStart = path.rfind('/') + 1;  // no folder (npos + 1 is 0): the whole path
      addEntry(path, path.c_str() + nameStart, asked, entries);
    }
  }
  return 0;
}
