#!/usr/bin/env bash
# Installs a built tree into a temporary prefix with cmake --install and
# builds the consumer project of tests/consumer against it with
# find_package(kovo); then runs it (through RUNNER, e.g. wine, when given).
#   scripts/test-install.sh BUILD_DIR [TOOLCHAIN_FILE [RUNNER]]
set -euo pipefail
cd "$(dirname "$0")/.."
build=$1
toolchain=${2:-}
runner=${3:-}
work=$(mktemp -d "${TMPDIR:-/tmp}/kovo-install.XXXXXX")
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" > /dev/null
configure=(-S tests/consumer -B "$work/consumer" -Dkovo_DIR="$work/prefix/lib/cmake/kovo")
if [ -n "$toolchain" ]; then configure+=(-DCMAKE_TOOLCHAIN_FILE="$PWD/$toolchain"); fi
cmake "${configure[@]}" > /dev/null
cmake --build "$work/consumer" > /dev/null

consumer=$(find "$work/consumer" -maxdepth 1 -name 'kovo_consumer*' -type f -perm -u+x | head -1)
# On Windows the program finds the DLLs beside itself: it runs from the
# installed bin folder.
if [ -n "$runner" ]; then
  cp "$consumer" "$work/prefix/bin/"
  consumer="$work/prefix/bin/$(basename "$consumer")"
fi
output=$(timeout 120 $runner "$consumer" | tr -d '\r')
if [ "$output" != "ALLTRIM: [kovo]" ]; then
  echo "the consumer of the installed tree printed '$output'" >&2
  exit 1
fi
echo "installed tree: find_package(kovo) and a call of ALLTRIM work${runner:+ (under $runner)}"
