#!/usr/bin/env bash
# The 32-bit Windows build, tested under Wine: installs the MinGW-w64 cross
# compiler and Wine with its 32-bit part, builds kovovmmt.dll, kovovmf.dll and
# kovo.exe in build-win32/, and runs the unit tests and every case file, in
# the ordinary and the extended frame layout, in a private Wine prefix made
# for the run and removed afterwards.
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(
  g++-mingw-w64-i686-posix binutils-mingw-w64-i686 mingw-w64-i686-dev
  libz-mingw-w64 libz-mingw-w64-dev googletest
  wine wine32:i386 libodbc2:i386 libsqliteodbc:i386
)
scripts/install-packages.sh --i386 "${packages[@]}"

export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-$(command -v ccache || true)}
cmake -S . -B build-win32 -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-i686.cmake \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKOVO_BENCHMARKS=OFF > /dev/null
cmake --build build-win32 -j"$(nproc)"

WINEPREFIX=$(mktemp -d "${TMPDIR:-/tmp}/kovo-wine.XXXXXX")
export WINEPREFIX WINEARCH=win32 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
# The programs were written for a Russian Windows: its ANSI code page, 1251,
# is the one Wine then takes, and the registry compares names in it.
export LC_ALL=ru_RU.UTF-8
stop_wine() {
  timeout 60 wineserver -k > /dev/null 2>&1 || true
  rm -rf "$WINEPREFIX"
}
trap stop_wine EXIT
wineserver -p > /dev/null 2>&1 < /dev/null
timeout 300 wine wineboot -i > /dev/null 2>&1

# A Wine without its 32-bit part exits 0 and prints nothing: the shell must
# really have run, and on Windows.
platform=$(timeout 60 wine build-win32/kovo.exe -e 'OS()' 2> /dev/null | tr -d '\r')
if [[ "$platform" != '"Windows NT'* ]]; then
  echo "kovo.exe did not run under Wine (it printed '$platform')" >&2
  exit 1
fi
echo "kovo.exe runs under Wine: $platform"

# A test rarely finds Wine hanging as it starts: such a run is tried again.
ctest --test-dir build-win32 --output-on-failure --timeout 180 --repeat after-timeout:2 -j"$(nproc)"
scripts/test-install.sh build-win32 cmake/mingw-w64-i686.cmake wine
