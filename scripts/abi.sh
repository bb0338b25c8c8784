#!/usr/bin/env bash
# What has changed in the binary interface since a revision:  scripts/abi.sh REVISION
#
# Builds the library of the revision and that of HEAD, from what is committed, and compares them, as far
# as the exported headers tell of it. The answer of abidiff is printed. Exit 1: programs linked with
# the old library would not run with the new one, and yet both have the name by which they look for it.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

require_packages g++ cmake ninja-build git abigail-tools
revision=${1:?a revision to compare with}
work=$PWD/build/abi
rm -rf "$work"

# build NAME REVISION: the library and its headers, in $work/NAME. What the compiler optimises is not
# compared. Sources that can be compiled many at once say so in their presets.
build() {
  local commit source=$work/$1-source unity=OFF
  commit=$(git rev-parse --verify "$2^{commit}")
  mkdir -p "$source"
  git archive "$commit" | tar -x -C "$source"
  if grep -qs CMAKE_UNITY_BUILD "$source/CMakePresets.json"; then unity=ON; fi
  cmake -S "$source" -B "$work/$1" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DBUILD_TESTING=OFF \
    -DCMAKE_UNITY_BUILD=$unity -DCMAKE_UNITY_BUILD_BATCH_SIZE=12 \
    -DZVRSIT_BUILD_TESTS=OFF -DZVRSIT_BUILD_CLI=OFF -DZVRSIT_BUILD_EXAMPLES=OFF >/dev/null
  cmake --build "$work/$1" --target zvrsit40 | tail -n 1
}
headers() { if [ -d "$work/$1/include" ]; then echo "$work/$1/include"; else echo "$work/$1-source"; fi; }
soname() { readelf -d "$work/$1/libzvrsit40.so" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p'; }

build old "$revision"
build new HEAD

status=0
abidiff --headers-dir1 "$(headers old)" --headers-dir2 "$(headers new)" \
  "$work/old/libzvrsit40.so" "$work/new/libzvrsit40.so" || status=$?
# Bits of abidiff: 1 error, 2 usage, 4 changed, 8 changed so that programs break.
if [ $((status & 3)) -ne 0 ]; then exit 2; fi
echo "$(soname old) -> $(soname new)"
if [ $((status & 8)) -ne 0 ] && [ "$(soname old)" = "$(soname new)" ]; then
  echo "the change is incompatible, and the name is the old one: raise the version in platform/version.h"
  exit 1
fi
