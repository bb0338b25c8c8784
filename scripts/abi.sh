#!/usr/bin/env bash
# What has changed in the binary interface since a revision:  scripts/abi.sh REVISION
#
# Builds the library of both and compares them, as far as the exported headers tell of it. The answer
# of abidiff is printed. Exit 1: programs linked with the old library would not run with the new one,
# and yet both have the name by which they look for it.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

base=$(git rev-parse --verify "${1:?a revision to compare with}^{commit}")
require_packages g++ cmake ninja-build git abigail-tools
work=$PWD/build/abi
trap 'git worktree remove --force "$work/source" 2>/dev/null || true' EXIT

# build NAME SOURCE: the library and its headers, in $work/NAME.
build() {
  cmake -S "$2" -B "$work/$1" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBUILD_TESTING=OFF \
    -DZVRSIT_BUILD_TESTS=OFF -DZVRSIT_BUILD_CLI=OFF -DZVRSIT_BUILD_EXAMPLES=OFF >/dev/null
  cmake --build "$work/$1" --target zvrsit40 | tail -n 1
}
headers() { if [ -d "$work/$1/include" ]; then echo "$work/$1/include"; else echo "$2"; fi; }
soname() { readelf -d "$work/$1/libzvrsit40.so" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p'; }

git worktree prune
git worktree add --force --detach "$work/source" "$base" >/dev/null 2>&1
build old "$work/source"
build new "$PWD"

status=0
abidiff --headers-dir1 "$(headers old "$work/source")" --headers-dir2 "$(headers new "$PWD")" \
  "$work/old/libzvrsit40.so" "$work/new/libzvrsit40.so" || status=$?
# Bits of abidiff: 1 error, 2 usage, 4 changed, 8 changed so that programs break.
if [ $((status & 3)) -ne 0 ]; then exit 2; fi
echo "$(soname old) -> $(soname new)"
if [ $((status & 8)) -ne 0 ] && [ "$(soname old)" = "$(soname new)" ]; then
  echo "the change is incompatible, and the name is the old one: raise the version in platform/version.h"
  exit 1
fi
