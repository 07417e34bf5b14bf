// The function library, loaded by name and searched by name as the
// interpreter does it.
#pragma once

#include <string>
#include <vector>

#include "kovo/vmengine.h"

// Whether an exported name is a VM function's: one that carries an upper-case
// letter (the natives that the library also exports are in lower case) and is
// no C++ name.
bool isFunctionName(const char* name);

class Library {
 public:
  // Loads the library; `path` may be a bare file name, searched beside the shell.
  explicit Library(const std::string& path);
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  bool loaded() const { return handle_ != nullptr; }
  const std::string& error() const { return error_; }
  // The exported VM function of that (upper-case) name, or null.
  VMFunction find(const std::string& name) const;
  // Any other symbol of the library itself (a native routine), or null.
  void* native(const std::string& name) const;
  // The names of the exported VM functions, sorted.
  std::vector<std::string> functionNames() const;

 private:
  void* handle_ = nullptr;
  void* base_ = nullptr;
  std::string file_;
  std::string error_;
};
