// Benchmarks side by side with a reference measured in the same run: Debian's
// own Python (/usr/bin/python3), timing the equivalent operation on the same
// bytes, and a VM context for calling library functions through the frame.
#pragma once

#include <benchmark/benchmark.h>

#include <string>

#include "kovo/host_embed.h"

// Registers a benchmark whose time per iteration is what Python takes for
// `statement`. `data` is handed to Python as the bytes object `data`;
// `setup` runs once before timing. `bytes` is the work size of one run.
void registerPythonReference(const std::string& name, const std::string& data,
                             const std::string& setup, const std::string& statement, int64_t bytes);

// A context for benchmarks; errors and reports are dropped.
VMEngine* benchContext();

// Calls a VM function through a full frame, as the interpreter does: symbol,
// nil self, arguments, call, return item.
Item* benchCall(VMEngine* vm, DynSymbol* symbol, std::initializer_list<Item*> args);

// Pseudo-random lower-case text, the same for every run.
std::string randomLowercase(size_t length, uint32_t seed);
