#include "case_directory.h"

#include <cstdlib>
#include <random>

#include "environment.h"

namespace {

// Taken once, before any case has changed TMPDIR.
const std::filesystem::path& temporaryBase() {
  static const std::filesystem::path base = std::filesystem::temp_directory_path();
  return base;
}

void setVariable(const std::string& name, const std::pair<bool, std::string>& value) {
  if (value.first) {
    setEnvironmentVariable(name, value.second);
  } else {
    removeEnvironmentVariable(name);
  }
}

}  // namespace

CaseDirectory::CaseDirectory() : previous_(std::filesystem::current_path()) {
  std::random_device random;
  for (;;) {
    path_ = temporaryBase() / ("kovo-case-" + std::to_string(random()));
    if (std::filesystem::create_directory(path_)) break;
  }
  std::filesystem::current_path(path_);
  const std::string directory = path_.string();
  const std::pair<std::string, std::string> variables[] = {
      {"TEMP", directory},
      {"TMP", directory},
      {"TMPDIR", directory},
      {"KOVO_REGISTRY", (path_ / "registry.db").string()},
  };
  for (const auto& [name, value] : variables) {
    const char* old = std::getenv(name.c_str());
    saved_.push_back({name, {old != nullptr, old ? old : ""}});
    setVariable(name, {true, value});
  }
}

CaseDirectory::~CaseDirectory() {
  for (const auto& [name, value] : saved_)
    setVariable(name, value);
  std::error_code ignored;
  std::filesystem::current_path(previous_, ignored);
  std::filesystem::remove_all(path_, ignored);
}
