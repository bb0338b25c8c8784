#!/usr/bin/env bash
# Builds and runs every test:  scripts/test.sh [PRESET] [CTEST OPTION...]
#
# PRESET is asan (the default: address and undefined-behaviour sanitizers), debug or release.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

preset=${1:-asan}
shift || true
require_packages "${BUILD_PACKAGES[@]}" "${BROWSER_PACKAGES[@]}"
unpack_package "$TREE_PACKAGE"

cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
ctest --preset "$preset" -j "$(nproc)" "$@"
