// The process's environment variables, as both the C library and the
// operating system's own calls read them.
#pragma once

#include <string>

void setEnvironmentVariable(const std::string& name, const std::string& value);
void removeEnvironmentVariable(const std::string& name);
