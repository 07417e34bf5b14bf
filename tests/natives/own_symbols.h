// The library loaded as the interpreter loads it, and the symbols that it
// defines itself (not those of the modules it depends on).
#pragma once

#include <string>

// Loads the library; false, with the system's text in `error`, when it fails.
bool loadLibrary(const char* path, std::string* error);
// The library's own symbol of that name, or null.
void* ownSymbol(const char* name);
