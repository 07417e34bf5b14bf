// regedit files of any bytes: the reader stays inside them, and what it
// reads, written again in the 5.00 form, reads back the same.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "os/reg_file.h"

namespace {

// The keys and values of the operations that a file can write again.
std::vector<RegKeyText> keysOf(const std::vector<RegOperation>& operations) {
  std::vector<RegKeyText> keys;
  for (const RegOperation& operation : operations) {
    if (operation.kind == RegOperation::CREATE_KEY) {
      std::string path = regRootName(operation.root);
      if (!operation.path.empty()) path += "\\" + operation.path;
      keys.push_back({path, {}});
    } else if (operation.kind == RegOperation::SET_VALUE && !keys.empty()) {
      keys.back().values.push_back({operation.name, operation.type, operation.data});
    }
  }
  return keys;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::vector<RegOperation> operations;
  std::string error;
  if (!regParse(std::string(reinterpret_cast<const char*>(data), size), &operations, &error)) {
    return 0;
  }
  std::vector<RegKeyText> keys = keysOf(operations);
  std::vector<RegOperation> again;
  if (!regParse(regFormat(keys), &again, &error)) std::abort();
  if (keysOf(again).size() != keys.size()) std::abort();
  std::vector<RegKeyText> reread = keysOf(again);
  for (size_t i = 0; i < keys.size(); i++) {
    if (reread[i].values.size() != keys[i].values.size()) std::abort();
    for (size_t v = 0; v < keys[i].values.size(); v++) {
      const RegValue& a = keys[i].values[v];
      const RegValue& b = reread[i].values[v];
      if (a.name != b.name || a.type != b.type || a.data != b.data) std::abort();
    }
  }
  return 0;
}
