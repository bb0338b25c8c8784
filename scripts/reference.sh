#!/usr/bin/env bash
# The reference of the library, from its exported headers, in build/reference/html; a warning of
# Doxygen is an error:  scripts/reference.sh
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

require_packages "${BUILD_PACKAGES[@]}" doxygen
cmake --preset debug >/dev/null
cmake --build --preset debug --target zvrsit40_headers >/dev/null
rm -rf build/reference
doxygen docs/Doxyfile
echo "build/reference/html/index.html"
