// The working directory of one case: a fresh, empty temporary directory that
// is the current directory, TEMP, TMP, TMPDIR and the registry store's folder
// while the case runs, and is removed with everything in it afterwards, so
// that no case sees what another left and none writes outside it.
#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

class CaseDirectory {
 public:
  CaseDirectory();
  ~CaseDirectory();
  CaseDirectory(const CaseDirectory&) = delete;
  CaseDirectory& operator=(const CaseDirectory&) = delete;

 private:
  std::filesystem::path previous_;
  std::filesystem::path path_;
  // The variables as they were: name, and its value when it was set.
  std::vector<std::pair<std::string, std::pair<bool, std::string>>> saved_;
};
