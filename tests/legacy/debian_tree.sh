#!/bin/sh
# Runs the older generation over an unpacked Debian documentation package.
#
#   debian_tree.sh TEST_LEGACY [PACKAGE] [FOLDER_IN_PACKAGE]
set -eu
test_legacy=$(realpath "$1")
package=${2:-postgresql-doc-15}
folder=${3:-usr/share/doc/postgresql-doc-15/html}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
apt-get download "$package"
dpkg -x ./*.deb tree
ZVRSIT_LEGACY_TREE="$work/tree/$folder" "$test_legacy" --gtest_filter='TreeOfRealPages.*'
