#!/usr/bin/env bash
# The library for Windows: builds and packs it for 32 and 64 bits, and tests it as 32-bit programs
# under a private Wine in the build folder:  scripts/windows.sh [CTEST OPTION...]
#
# Where that Wine cannot be had, everything is built and packed all the same, and ctest calls the
# tests that have to be run skipped. ZVRSIT_WINE32_HOME names another folder for it; an empty one
# stands for none.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

require_packages "${BUILD_PACKAGES[@]}" googletest g++-mingw-w64-i686-posix \
  g++-mingw-w64-x86-64-posix

wine=${ZVRSIT_WINE32_HOME-$PWD/build/wine32}
if [ -n "$wine" ]; then
  wine=$(realpath -m "$wine")
  answer=$(scripts/setup_wine32.sh "$wine" | tail -n 1) || wine=
  echo "$answer"
else
  echo "wine32: SKIPPED (none is wanted)"
fi

# The 64-bit library: what can be checked without running it.
cmake --preset windows64 >/dev/null
cmake --build --preset windows64
ctest --preset windows64 "$@"

cmake --preset windows32 -DZVRSIT_WINE32_HOME="$wine" >/dev/null
cmake --build --preset windows32
if [ -n "$wine" ]; then
  # Wine's server and services start once, with no pipe of ctest in their hands, and end with the
  # shell that started them.
  unshare --pid --fork --mount-proc --kill-child bash -c '
    wine=$1 && shift
    scripts/wine32_run.sh "$wine" --server --persistent
    scripts/wine32_run.sh "$wine" wineboot </dev/null >/dev/null 2>&1
    ctest --preset windows32 -j "$(nproc)" "$@"
    exit $?' windows "$wine" "$@"
else
  ctest --preset windows32 "$@"
fi
ls build/windows*/zvrsit40-*.zip
