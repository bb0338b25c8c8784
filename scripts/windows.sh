#!/usr/bin/env bash
# The library for Windows: builds the 32-bit one with its tests, runs them under a private 32-bit
# Wine in the build folder, builds the 64-bit library, and packs both:  scripts/windows.sh
#
# Where that Wine cannot be had, everything is built, and ctest calls the tests skipped.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

build=$PWD/build/windows32
require_packages cmake ninja-build googletest libcli11-dev libfmt-dev nlohmann-json3-dev python3 zip \
  g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix

mkdir -p "$build"
wine=
if answer=$(scripts/setup_wine32.sh "$build/wine32" | tail -n 1); then wine=$build/wine32; fi
echo "$answer"

cmake --preset windows32 -DZVRSIT_WINE32_HOME="$wine" >/dev/null
cmake --build --preset windows32
if [ -n "$wine" ]; then
  # Wine's server starts once, and ends with the last of the tests.
  unshare --pid --fork --mount-proc --kill-child bash -c '
    scripts/wine32_run.sh "$0" --server --persistent
    ctest --preset windows32 -j "$(nproc)"' "$wine"
else
  ctest --preset windows32
fi

cmake --preset windows64 -DZVRSIT_BUILD_TESTS=OFF >/dev/null
cmake --build --preset windows64
for preset in windows32 windows64; do
  (cd "build/$preset" && cpack >/dev/null && ls ./*.zip)
done
