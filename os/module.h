// The operating system's view of the loaded library.
#pragma once

// The module handle of the library: the address at which it was loaded.
void* osCurrentModule();
