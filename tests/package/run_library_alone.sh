#!/usr/bin/env bash
# The library alone, as a static one, with nothing but a compiler at hand, and installed into folders
# that are given as absolute ones; then an application is built with it:
#   run_library_alone.sh CMAKE BUILD_FOLDER SOURCE_FOLDER COMPILER
set -euo pipefail
cmake=$1 build=$2 source=$3 compiler=$4
. "$source/tests/package/consumer_site.sh"

work=$build/library_alone
rm -rf "$work"/{prefix,cmake,site,empty,db*}
make_consumer_site "$work"
absolute=$(mktemp -d)  # elsewhere: an installation is no part of the sources
trap 'rm -rf "$absolute"' EXIT
without=()
for package in GTest CLI11 fmt nlohmann_json Python3 PkgConfig; do
  without+=("-DCMAKE_DISABLE_FIND_PACKAGE_$package=ON")
done
"$cmake" -S "$source" -B "$work/build" -G Ninja "${without[@]}" -DBUILD_SHARED_LIBS=OFF \
  -DBUILD_TESTING=OFF -DZVRSIT_BUILD_CLI=OFF -DZVRSIT_BUILD_EXAMPLES=OFF -DCMAKE_UNITY_BUILD=ON \
  -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_INSTALL_PREFIX="$work/prefix" \
  -DCMAKE_INSTALL_LIBDIR="$absolute/lib" -DCMAKE_INSTALL_INCLUDEDIR="$absolute/headers" \
  --no-warn-unused-cli >/dev/null
"$cmake" --build "$work/build" | tail -n 1
if grep -q -e '-Werror' "$work/build/build.ninja"; then
  echo "warnings are errors for somebody who only builds the library" && exit 1
fi
"$cmake" --install "$work/build" >/dev/null
[ -e "$absolute/lib/libzvrsit40.a" ] || { echo "no static library" && exit 1; }

"$cmake" -S "$source/tests/consumer" -B "$work/cmake" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
  -Dzvrsit40_DIR="$absolute/lib/cmake/zvrsit40" >/dev/null
"$cmake" --build "$work/cmake" | tail -n 1
run_consumer "$work" db1 "$work/cmake/consumer"

# The driver of C is not told what a program of C++ needs; Libs.private says it.
export PKG_CONFIG_PATH=$absolute/lib/pkgconfig
# shellcheck disable=SC2046  # lists of words
"$compiler" -std=c++20 -c $(pkg-config --cflags zvrsit40) "$source/tests/consumer/consumer.cc" \
  -o "$work/consumer.o"
# shellcheck disable=SC2046
cc "$work/consumer.o" -o "$work/plain" $(pkg-config --static --libs zvrsit40)
run_consumer "$work" db2 "$work/plain"
