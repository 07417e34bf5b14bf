#include "library.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>

namespace {

// A bare file name is looked for beside the shell first, then where the
// system looks for libraries.
std::string locate(const std::string& path) {
  if (path.find('/') != std::string::npos) return path;
  char self[4096];
  ssize_t length = readlink("/proc/self/exe", self, sizeof self - 1);
  if (length <= 0) return path;
  std::string besideShell(self, static_cast<size_t>(length));
  besideShell = besideShell.substr(0, besideShell.rfind('/') + 1) + path;
  return access(besideShell.c_str(), R_OK) == 0 ? besideShell : path;
}

}  // namespace

Library::Library(const std::string& path) {
  // The library stays loaded for the life of the process, as the
  // interpreter keeps it.
  handle_ = dlopen(locate(path).c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  if (!handle_) {
    const char* message = dlerror();
    error_ = message ? message : "cannot load " + path;
    return;
  }
  link_map* map = nullptr;
  if (dlinfo(handle_, RTLD_DI_LINKMAP, &map) == 0 && map) {
    base_ = reinterpret_cast<void*>(map->l_addr);
    file_ = map->l_name;
  }
}

VMFunction Library::find(const std::string& name) const {
  return reinterpret_cast<VMFunction>(native(name));
}

void* Library::native(const std::string& name) const {
  if (!handle_) return nullptr;
  void* symbol = dlsym(handle_, name.c_str());
  if (!symbol) return nullptr;
  // dlsym also searches the libraries this one depends on: only functions
  // of the library itself count.
  Dl_info info;
  if (dladdr(symbol, &info) == 0 || info.dli_fbase != base_) return nullptr;
  return symbol;
}

std::vector<std::string> Library::functionNames() const {
  std::vector<std::string> names;
  std::ifstream in(file_, std::ios::binary);
  std::string image((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (image.size() < sizeof(Elf64_Ehdr)) return names;
  auto* header = reinterpret_cast<const Elf64_Ehdr*>(image.data());
  if (header->e_shoff == 0 ||
      header->e_shoff + header->e_shnum * sizeof(Elf64_Shdr) > image.size()) {
    return names;
  }
  auto* sections = reinterpret_cast<const Elf64_Shdr*>(image.data() + header->e_shoff);
  for (int i = 0; i < header->e_shnum; i++) {
    if (sections[i].sh_type != SHT_DYNSYM || sections[i].sh_link >= header->e_shnum) continue;
    const Elf64_Shdr& strings = sections[sections[i].sh_link];
    auto* symbols = reinterpret_cast<const Elf64_Sym*>(image.data() + sections[i].sh_offset);
    size_t count = sections[i].sh_size / sizeof(Elf64_Sym);
    for (size_t k = 0; k < count; k++) {
      const Elf64_Sym& symbol = symbols[k];
      if (symbol.st_shndx == SHN_UNDEF || ELF64_ST_TYPE(symbol.st_info) != STT_FUNC) continue;
      const char* name = image.data() + strings.sh_offset + symbol.st_name;
      if (isFunctionName(name)) names.emplace_back(name);
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}
