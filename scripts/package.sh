#!/usr/bin/env bash
# Makes the Debian packages, checks them with lintian, and tries them on a bare Debian 12, on which
# nothing else is installed:  scripts/package.sh
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

require_packages "${BUILD_PACKAGES[@]}" dpkg-dev lintian mmdebstrap
cmake --preset package >/dev/null
cmake --build --preset package
rm -f build/package/*.deb
(cd build/package && cpack -G DEB >/dev/null)
lintian --fail-on error build/package/*.deb
tests/package/check_hardening.py build/package/cli/zvrsit build/package/*.so
tests/package/run_debian.sh build/package/*.deb
ls build/package/*.deb
