#!/usr/bin/env bash
# Installs those of the named Debian packages that are missing (apt-get, as
# root or through sudo). With --i386 first, the i386 architecture is added
# and the packages come from the release itself: the i386 index of the
# security archive is at times stale, so a failed update does not stop it.
set -euo pipefail

i386=false
if [ "${1-}" = --i386 ]; then
  i386=true
  shift
fi
missing=()
for package in "$@"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$package")
  fi
done
((${#missing[@]})) || exit 0

sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo=sudo; fi
release=()
if $i386; then
  $sudo dpkg --add-architecture i386
  $sudo apt-get update -q || echo "apt-get update failed; installing from bookworm"
  release=(-t bookworm)
else
  $sudo apt-get update -q
fi
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q --no-install-recommends \
  "${release[@]}" "${missing[@]}"
