// The C run time keeps a copy of the environment beside the process's own
// block: getenv reads the first, GetTempPathA and its kin the second, so
// both are set.
#include "environment.h"

#include <windows.h>

#include <cstdlib>

void setEnvironmentVariable(const std::string& name, const std::string& value) {
  _putenv_s(name.c_str(), value.c_str());
  SetEnvironmentVariableA(name.c_str(), value.c_str());
}

void removeEnvironmentVariable(const std::string& name) {
  _putenv_s(name.c_str(), "");
  SetEnvironmentVariableA(name.c_str(), nullptr);
}
