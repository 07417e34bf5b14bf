// kovo --reg-import and --reg-export: regedit's files in and out of the
// registry, through the same calls that programs use. An import is checked
// whole before anything is written and then written as one batch.
#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "kovo/export.h"
#include "kovo/host_misc.h"
#include "os/cp1251.h"
#include "os/reg_file.h"
#include "os/registry.h"

namespace {

// Value names may be as long as Win32 allows; key names have 255 characters at most.
constexpr uint32_t VALUE_NAME_BUFFER = 16384;
constexpr uint32_t KEY_NAME_BUFFER = 256;
constexpr uint32_t KEY_READ_ACCESS = 0x20019;

void report(VMEngine* vm, const std::string& text) {
  kovo_report_error(vm, text.c_str());
}

struct Import {
  const std::string& file;
  const std::vector<RegOperation>& operations;
  uint32_t current = 0;  // the key that values go to, open
};

void closeCurrent(VMEngine* vm, Import& import) {
  if (import.current) osRegCloseKey(vm, import.current);
  import.current = 0;
}

// Deletes a key with everything below it; a missing key is already gone.
int32_t deleteTree(VMEngine* vm, uint32_t parent, const std::string& path) {
  uint32_t key = 0;
  int32_t code = osRegOpenKey(vm, parent, path.c_str(), REG_KEY_ALL_ACCESS, &key);
  if (code == REG_ERROR_FILE_NOT_FOUND) return REG_OK;
  if (code != REG_OK) return code;
  char name[KEY_NAME_BUFFER];
  for (;;) {
    uint32_t length = sizeof name;
    code = osRegEnumKey(vm, key, 0, name, &length, nullptr, nullptr);
    if (code != REG_OK) break;
    code = deleteTree(vm, key, name);
    if (code != REG_OK) break;
  }
  osRegCloseKey(vm, key);
  if (code != REG_ERROR_NO_MORE_ITEMS) return code;
  return osRegDeleteKey(vm, parent, path.c_str());
}

int32_t apply(VMEngine* vm, Import& import, const RegOperation& operation) {
  switch (operation.kind) {
    case RegOperation::CREATE_KEY: {
      closeCurrent(vm, import);
      uint32_t disposition;
      return osRegCreateKeyEx(vm, operation.root, operation.path.c_str(), "", 0, REG_KEY_ALL_ACCESS,
                              nullptr, &import.current, &disposition);
    }
    case RegOperation::DELETE_KEY:
      closeCurrent(vm, import);
      return deleteTree(vm, operation.root, operation.path);
    case RegOperation::SET_VALUE:
      return osRegSetValue(vm, import.current, operation.name.c_str(), operation.type,
                           reinterpret_cast<const unsigned char*>(operation.data.c_str()),
                           static_cast<uint32_t>(operation.data.size()));
    case RegOperation::DELETE_VALUE: {
      int32_t code = osRegDeleteValue(vm, import.current, operation.name.c_str());
      return code == REG_ERROR_FILE_NOT_FOUND ? REG_OK : code;
    }
  }
  return REG_ERROR_INVALID_PARAMETER;
}

int32_t applyAll(VMEngine* vm, void* cargo) {
  Import& import = *static_cast<Import*>(cargo);
  int32_t code = REG_OK;
  for (const RegOperation& operation : import.operations) {
    code = apply(vm, import, operation);
    if (code != REG_OK) {
      report(vm, import.file + ": line " + std::to_string(operation.line) +
                     ": the registry refused it with code " + std::to_string(code));
      break;
    }
  }
  closeCurrent(vm, import);
  return code;
}

// Appends the key and everything below it, each level in name order.
int32_t collect(VMEngine* vm, uint32_t key, const std::string& path,
                std::vector<RegKeyText>* keys) {
  keys->push_back({path, {}});
  std::vector<char> name(VALUE_NAME_BUFFER);
  int32_t code = REG_OK;
  for (uint32_t index = 0; code == REG_OK; index++) {
    uint32_t nameLength = VALUE_NAME_BUFFER;
    uint32_t type = 0;
    uint32_t size = 0;
    code = osRegEnumValue(vm, key, index, name.data(), &nameLength, &type, nullptr, &size);
    if (code != REG_OK) break;
    std::string data(size, '\0');
    nameLength = VALUE_NAME_BUFFER;
    code = osRegEnumValue(vm, key, index, name.data(), &nameLength, &type,
                          reinterpret_cast<unsigned char*>(data.data()), &size);
    if (code == REG_OK)
      keys->back().values.push_back({std::string(name.data(), nameLength), type, data});
  }
  if (code != REG_ERROR_NO_MORE_ITEMS) return code;
  code = REG_OK;
  for (uint32_t index = 0; code == REG_OK; index++) {
    char subName[KEY_NAME_BUFFER];
    uint32_t length = sizeof subName;
    code = osRegEnumKey(vm, key, index, subName, &length, nullptr, nullptr);
    if (code != REG_OK) break;
    uint32_t sub = 0;
    code = osRegOpenKey(vm, key, subName, KEY_READ_ACCESS, &sub);
    if (code != REG_OK) break;
    code = collect(vm, sub, path + "\\" + subName, keys);
    osRegCloseKey(vm, sub);
  }
  return code == REG_ERROR_NO_MORE_ITEMS ? REG_OK : code;
}

bool sameName(const char* a, const std::string& b) {
  size_t i = 0;
  for (; a[i] && i < b.size(); i++) {
    if (cp1251Upper(static_cast<unsigned char>(a[i])) !=
        cp1251Upper(static_cast<unsigned char>(b[i])))
      return false;
  }
  return !a[i] && i == b.size();
}

// The path as the registry keeps its names, whatever case it was asked in.
std::string storedPath(VMEngine* vm, uint32_t root, const std::string& path) {
  std::string stored = regRootName(root);
  uint32_t parent = root;
  for (size_t start = 0; start < path.size() && parent;) {
    size_t end = std::min(path.find('\\', start), path.size());
    std::string level = path.substr(start, end - start);
    start = end + 1;
    char name[KEY_NAME_BUFFER];
    uint32_t length = sizeof name;
    for (uint32_t index = 0;
         osRegEnumKey(vm, parent, index, name, &length, nullptr, nullptr) == REG_OK;
         index++, length = sizeof name) {
      if (sameName(name, level)) {
        level = name;
        break;
      }
    }
    stored += "\\" + level;
    uint32_t next = 0;
    osRegOpenKey(vm, parent, level.c_str(), KEY_READ_ACCESS, &next);
    if (parent != root) osRegCloseKey(vm, parent);
    parent = next;
  }
  if (parent && parent != root) osRegCloseKey(vm, parent);
  return stored;
}

}  // namespace

// Imports a .reg file; 0 when everything landed, otherwise nothing did and
// the reason went to kovo_report_error.
extern "C" KOVO_EXPORT int kovo_reg_import(VMEngine* vm, const char* file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) {
    report(vm, std::string(file) + ": cannot be read");
    return 1;
  }
  std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::vector<RegOperation> operations;
  std::string error;
  if (!regParse(bytes, &operations, &error)) {
    report(vm, std::string(file) + ": " + error + "; nothing was imported");
    return 1;
  }
  Import import{file, operations};
  return osRegBatch(vm, applyAll, &import) == REG_OK ? 0 : 1;
}

// Writes a key and everything below it as a 5.00 .reg file; 0 when done.
extern "C" KOVO_EXPORT int kovo_reg_export(VMEngine* vm, const char* keyName, const char* file) {
  std::string full = keyName;
  while (!full.empty() && full.back() == '\\')
    full.pop_back();
  size_t slash = full.find('\\');
  uint32_t root = regRootOf(full.substr(0, slash));
  if (root == 0) {
    report(vm, "\"" + full + "\" does not begin with a root key such as HKEY_CURRENT_USER");
    return 1;
  }
  std::string path = slash == std::string::npos ? "" : full.substr(slash + 1);
  uint32_t key = 0;
  int32_t code = osRegOpenKey(vm, root, path.c_str(), KEY_READ_ACCESS, &key);
  if (code != REG_OK) {
    std::string asked = std::string(regRootName(root)) + (path.empty() ? "" : "\\" + path);
    report(vm, asked + ": cannot be opened (code " + std::to_string(code) + ")");
    return 1;
  }
  std::string shown = storedPath(vm, root, path);
  std::vector<RegKeyText> keys;
  code = collect(vm, key, shown, &keys);
  osRegCloseKey(vm, key);
  if (code != REG_OK) {
    report(vm, shown + ": cannot be read (code " + std::to_string(code) + ")");
    return 1;
  }
  std::string text = regFormat(keys);
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  out.close();
  if (!out) {
    report(vm, std::string(file) + ": cannot be written");
    return 1;
  }
  return 0;
}
