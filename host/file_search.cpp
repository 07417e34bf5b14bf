// The file layer's directory search over the platform's listing: taken whole
// at the first call, in case-insensitive name order, so that every machine
// gives the same sequence.
#include <algorithm>
#include <cctype>
#include <cstring>
#include <vector>

#include "file_context.h"
#include "file_listing.h"

namespace {

struct Listing {
  std::vector<FileFindInfo> entries;
  size_t next = 0;
};

int compareFolded(const char* a, const char* b) {
  for (;; a++, b++) {
    int x = std::toupper(static_cast<unsigned char>(*a));
    int y = std::toupper(static_cast<unsigned char>(*b));
    if (x != y || x == 0) return x - y;
  }
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
  auto* listing = new Listing;
  *code = listEntries(mask, attributes, &listing->entries);
  if (*code == 0 && listing->entries.empty()) *code = FS_FILE_NOT_FOUND;
  if (*code != 0) {
    delete listing;
    return nullptr;
  }
  std::sort(listing->entries.begin(), listing->entries.end(),
            [](const FileFindInfo& a, const FileFindInfo& b) {
              int order = compareFolded(a.name, b.name);
              return order != 0 ? order < 0 : std::strcmp(a.name, b.name) < 0;
            });
  auto* find = new FileFindInfo{};
  find->handle = listing;
  advance(find);
  fileContext(vm).searches.push_back(find);
  return find;
}

}  // namespace

bool wantedEntry(uint32_t attributes, uint32_t asked) {
  return (attributes & (FA_HIDDEN | FA_SYSTEM | FA_DIRECTORY) & ~asked) == 0;
}

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
