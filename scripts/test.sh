#!/usr/bin/env bash
# Installs, builds and runs the whole test suite: the ordinary build and the
# sanitizer build (AddressSanitizer + UndefinedBehaviorSanitizer), each with
# its unit tests and the shell cases in the ordinary and the extended frame
# layout, a short run of every fuzz target and the thread test under
# ThreadSanitizer; then checks that the sources
# follow .clang-format.
set -euo pipefail
cd "$(dirname "$0")/.."

# PostgreSQL and psqlODBC for the ODBC bridge's server cases.
scripts/setup.sh postgresql odbc-postgresql
ctest --test-dir build --output-on-failure -j"$(nproc)"
scripts/test-install.sh build

cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DKOVO_SANITIZE=ON -DKOVO_BENCHMARKS=OFF \
  -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g" > /dev/null
cmake --build build-asan -j"$(nproc)"
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1 \
  ctest --test-dir build-asan --output-on-failure -j"$(nproc)"

# The fuzz targets of the readers of untrusted bytes, a few seconds each, and
# a minute of the call fuzzer over every export: clang, their own tree.
cmake -S tests/fuzz -B build-fuzz -DCMAKE_CXX_COMPILER=clang++ > /dev/null
cmake --build build-fuzz -j"$(nproc)"
ctest --test-dir build-fuzz --output-on-failure -j"$(nproc)"

# Several threads at once, each with its own context, under ThreadSanitizer:
# its own tree, with only the host, the library and the shell's evaluator.
cmake -S tests/threads -B build-tsan -DCMAKE_CXX_COMPILER=clang++ > /dev/null
cmake --build build-tsan -j"$(nproc)"
ctest --test-dir build-tsan --output-on-failure

# The 32-bit Windows build under Wine.
scripts/test-windows.sh

git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run --Werror
echo "all tests passed"
