// The file layer's directory search: a listing taken at the first call, in
// case-insensitive name order, so that every machine gives the same sequence.
#include <dirent.h>
#include <sys/stat.h>

#include <strings.h>
#include <algorithm>
#include <cstring>
#include <vector>

#include "../file_context.h"
#include "attributes.h"
#include "name_space.h"

namespace {

struct Listing {
  std::vector<FileFindInfo> entries;
  size_t next = 0;
};

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

// Plain files (read-only and archive among them) are always found; hidden,
// system and directory entries only when their bit is asked for.
bool wanted(uint32_t attributes, uint32_t asked) {
  return (attributes & (FA_HIDDEN | FA_SYSTEM | FA_DIRECTORY) & ~asked) == 0;
}

std::string joined(const std::string& directory, const char* name) {
  if (directory.empty()) return name;
  return directory.back() == '/' ? directory + name : directory + "/" + name;
}

void listDirectory(const std::string& directory, const char* pattern, uint32_t asked, bool atRoot,
                   Listing* listing) {
  DIR* dir = opendir(directory.empty() ? "." : directory.c_str());
  if (!dir) return;
  while (dirent* entry = readdir(dir)) {
    bool dots = std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0;
    // A drive's root has no "." and ".." entries on Windows.
    if ((dots && atRoot) || !fsMatchWild(entry->d_name, pattern)) continue;
    FileFindInfo found = {};
    if (describe(joined(directory, entry->d_name), entry->d_name, &found) &&
        wanted(found.attributes, asked))
      listing->entries.push_back(found);
  }
  closedir(dir);
  std::sort(listing->entries.begin(), listing->entries.end(),
            [](const FileFindInfo& a, const FileFindInfo& b) {
              int order = strcasecmp(a.name, b.name);
              return order != 0 ? order < 0 : std::strcmp(a.name, b.name) < 0;
            });
}

// The search's listing, or the Windows code of its failure.
Listing* startListing(const char* mask, uint32_t asked, uint32_t* code) {
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
        !S_ISDIR(info.st_mode)) {
      *code = FS_PATH_NOT_FOUND;
      return nullptr;
    }
    directory = resolved.path;
    DriveTable table = currentDrives();
    for (const std::string& root : table.roots)
      atRoot = atRoot || (!root.empty() && root == directory);
  }
  auto* listing = new Listing;
  if (std::strpbrk(pattern, "*?")) {
    listDirectory(directory, pattern, asked, atRoot, listing);
  } else if (*pattern) {
    // One name: found through the name space, without a listing when it
    // exists as written.
    std::string path = joined(directory, pattern);
    FileFindInfo found = {};
    if (matchLetterCase(&path, directory.size()) == NameStatus::Exists &&
        describe(path, path.c_str() + path.rfind('/') + 1, &found) &&
        wanted(found.attributes, asked))
      listing->entries.push_back(found);
  }
  if (listing->entries.empty()) {
    delete listing;
    *code = FS_FILE_NOT_FOUND;
    return nullptr;
  }
  return listing;
}

bool advance(FileFindInfo* find) {
  auto* listing = static_cast<Listing*>(find->handle);
  if (listing->next >= listing->entries.size()) return false;
  void* handle = find->handle;
  *find = listing->entries[listing->next++];
  find->handle = handle;
  return true;
}

FileFindInfo* findFirst(VMEngine* vm, const char* mask, uint32_t attributes, uint32_t* code) {
  Listing* listing = startListing(mask, attributes, code);
  if (!listing) return nullptr;
  auto* find = new FileFindInfo{};
  find->handle = listing;
  advance(find);
  fileContext(vm).searches.push_back(find);
  *code = 0;
  return find;
}

}  // namespace

void releaseSearch(FileFindInfo* find) {
  delete static_cast<Listing*>(find->handle);
  find->handle = nullptr;
}

FileFindInfo* fsFindFirst(VMEngine* vm, const char* mask, uint32_t attributes) {
  uint32_t code;
  FileFindInfo* find = findFirst(vm, mask, attributes, &code);
  fileFailure(vm, code);
  return find;
}

FileFindInfo* fsFindFirstQuiet(VMEngine* vm, const char* mask, uint32_t attributes) {
  uint32_t code;
  return findFirst(vm, mask, attributes, &code);
}

bool fsFindNext(VMEngine*, FileFindInfo* find) {
  return find && find->handle && advance(find);
}

void fsFindClose(VMEngine* vm, FileFindInfo* find) {
  if (!find) return;
  std::vector<FileFindInfo*>& searches = fileContext(vm).searches;
  searches.erase(std::remove(searches.begin(), searches.end(), find), searches.end());
  releaseSearch(find);
  delete find;
}
