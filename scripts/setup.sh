#!/usr/bin/env bash
# Installs what is missing on a Debian 12 machine (apt-get, as root or through
# sudo), then configures and builds the ordinary build in build/.
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(
  build-essential cmake pkg-config
  libgtest-dev libbenchmark-dev libedit-dev zlib1g-dev
  clang libclang-rt-14-dev clang-format python3 binutils
  libsqlite3-dev sqlite3
)
missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$package")
  fi
done
if ((${#missing[@]})); then
  sudo=""
  if [ "$(id -u)" -ne 0 ]; then sudo=sudo; fi
  $sudo apt-get update -q
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
fi

cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo > /dev/null
cmake --build build -j"$(nproc)"
