// The file layer's per-context state and what every platform shares: the
// error cell, name splitting and merging, the search-path list and the
// Windows wildcard match.
#include "file_context.h"

#include <cctype>
#include <cstring>

#include "internals.h"
#include "kovo/host_items.h"

FileContext& fileContext(VMEngine* vm) {
  HostInternals* internals = vm->internals;
  if (!internals->files) internals->files = new FileContext{};
  return *internals->files;
}

void releaseFileContext(VMEngine* vm) {
  FileContext* files = vm->internals->files;
  if (!files) return;
  for (FileFindInfo* find : files->searches) {
    releaseSearch(find);
    delete find;
  }
  delete files;
  vm->internals->files = nullptr;
}

uint16_t cellCode(uint32_t windowsCode) {
  switch (windowsCode) {
    case FS_OK:
    case FS_FILE_NOT_FOUND:
    case FS_PATH_NOT_FOUND:
    case FS_TOO_MANY_OPEN:
    case FS_ACCESS_DENIED:
    case FS_INVALID_HANDLE:
    case FS_NOT_SAME_DEVICE:
    case FS_SHARING_VIOLATION:
    case FS_FILE_EXISTS:
    case FS_DISK_FULL:
    case FS_NAME_TOO_LONG:
      return static_cast<uint16_t>(windowsCode);
    case WIN_NO_MORE_FILES:
      return FS_FILE_NOT_FOUND;
    case WIN_LOCK_VIOLATION:
      return FS_SHARING_VIOLATION;
    case WIN_ALREADY_EXISTS:
      return FS_FILE_EXISTS;
    default:
      return FS_ACCESS_DENIED;
  }
}

uint16_t fsError(VMEngine* vm) {
  return fileContext(vm).error;
}

uint32_t fsOsError(VMEngine* vm) {
  return fileContext(vm).osError;
}

void fsSetError(VMEngine* vm, uint16_t code) {
  fileContext(vm).error = code;
}

namespace {

bool isSeparator(char c) {
  return c == '\\' || c == '/';
}

void copyPart(char* target, const char* from, size_t length) {
  if (length > 259) length = 259;
  std::memcpy(target, from, length);
  target[length] = '\0';
}

}  // namespace

HB_FNAME* fsFNameSplit(VMEngine* vm, const char* name) {
  auto* parts = static_cast<HB_FNAME*>(vmAlloc(vm, sizeof(HB_FNAME)));
  size_t length = std::strlen(name);
  if (length >= 2 && name[1] == ':' && std::isalpha(static_cast<unsigned char>(name[0]))) {
    parts->szDrive[0] = name[0];
    parts->szDrive[1] = ':';
  }
  // The path runs up to the last separator (or the drive's colon) and keeps it.
  size_t nameStart = parts->szDrive[0] ? 2 : 0;
  for (size_t i = nameStart; i < length; i++)
    if (isSeparator(name[i])) nameStart = i + 1;
  copyPart(parts->szPath, name, nameStart);
  const char* base = name + nameStart;
  const char* dot = std::strrchr(base, '.');
  size_t baseLength = dot ? static_cast<size_t>(dot - base) : std::strlen(base);
  copyPart(parts->szName, base, baseLength);
  if (dot) copyPart(parts->szExtension, dot, std::strlen(dot));
  return parts;
}

char* fsFNameMerge(VMEngine*, char* buffer, const HB_FNAME* parts) {
  std::string merged = parts->szPath[0] ? parts->szPath : parts->szDrive;
  if (!merged.empty() && parts->szName[0] && !isSeparator(merged.back()) && merged.back() != ':')
    merged += '\\';
  merged += parts->szName;
  merged += parts->szExtension;
  if (merged.size() > 259) merged.resize(259);
  std::memcpy(buffer, merged.c_str(), merged.size() + 1);
  return buffer;
}

// Names reach the operating system through the name space of the layer's
// platform; the conversion only trims the blanks that padded fields leave
// behind a name.
const char* fsFileNameConv(VMEngine* vm, const char* name, bool* mustFree) {
  size_t length = std::strlen(name);
  size_t trimmed = length;
  while (trimmed > 0 && name[trimmed - 1] == ' ')
    trimmed--;
  *mustFree = trimmed != length;
  if (!*mustFree) return name;
  auto* copy = static_cast<char*>(vmAlloc(vm, trimmed + 1));
  std::memcpy(copy, name, trimmed);
  return copy;
}

void fsAddSearchPath(VMEngine* vm, const char* path) {
  std::vector<std::string>& list = fileContext(vm).searchPaths;
  const char* start = path;
  for (;;) {
    const char* end = std::strpbrk(start, ";,");
    std::string entry(start, end ? static_cast<size_t>(end - start) : std::strlen(start));
    if (!entry.empty()) list.push_back(entry);
    if (!end) break;
    start = end + 1;
  }
}

void hb_setFreeSetPath(VMEngine* vm) {
  fileContext(vm).searchPaths.clear();
}

void close_text(VMEngine* vm, FHANDLE handle) {
  fsClose(vm, handle);
}

void close_binary(VMEngine* vm, FHANDLE handle) {
  fsClose(vm, handle);
}

namespace {

char fold(char c) {
  return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}

// Iterative match with one back-track point: linear in practice, quadratic at
// worst, never exponential.
bool globMatch(const char* name, size_t nameLength, const char* mask, size_t maskLength) {
  size_t n = 0, m = 0, starMask = SIZE_MAX, starName = 0;
  while (n < nameLength) {
    if (m < maskLength && mask[m] == '*') {
      starMask = m++;
      starName = n;
    } else if (m < maskLength && (mask[m] == '?' || fold(mask[m]) == fold(name[n]))) {
      m++;
      n++;
    } else if (starMask != SIZE_MAX) {
      m = starMask + 1;
      n = ++starName;
    } else {
      return false;
    }
  }
  while (m < maskLength && mask[m] == '*')
    m++;
  return m == maskLength;
}

}  // namespace

bool fsMatchWild(const char* name, const char* mask) {
  size_t nameLength = std::strlen(name);
  size_t maskLength = std::strlen(mask);
  if (std::strcmp(mask, "*.*") == 0) return true;
  if (globMatch(name, nameLength, mask, maskLength)) return true;
  // "NAME.*" stands for NAME with any extension, none included.
  return maskLength >= 2 && mask[maskLength - 2] == '.' && mask[maskLength - 1] == '*' &&
         std::strchr(name, '.') == nullptr && globMatch(name, nameLength, mask, maskLength - 2);
}
