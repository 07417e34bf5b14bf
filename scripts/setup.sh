#!/usr/bin/env bash
# Installs what is missing on a Debian 12 machine (apt-get, as root or through
# sudo), then configures and builds the ordinary build in build/. Packages
# named as arguments are installed as well.
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(
  build-essential cmake pkg-config
  libgtest-dev libbenchmark-dev libedit-dev zlib1g-dev
  clang libclang-rt-14-dev clang-format python3 binutils
  libsqlite3-dev sqlite3
  unixodbc unixodbc-dev libsqliteodbc
  "$@"
)
scripts/install-packages.sh "${packages[@]}"

# Programs name the SQLite ODBC driver "SQLite3"; its package registers it with
# unixODBC, and this puts the registration back should it have gone.
if ! odbcinst -q -d -n SQLite3 > /dev/null 2>&1; then
  sudo=""
  if [ "$(id -u)" -ne 0 ]; then sudo=sudo; fi
  $sudo odbcinst -i -d -f /usr/share/sqliteodbc/unixodbc.ini
fi

cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo > /dev/null
cmake --build build -j"$(nproc)"
