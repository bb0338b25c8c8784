#!/usr/bin/env bash
# Installs the library into a prefix of its own, builds the consumers against it, through the CMake
# package and through pkg-config, and runs them:
#   run_consumer.sh CMAKE BUILD_FOLDER CONSUMER_FOLDER COMPILER EXTRA_FLAGS
set -euo pipefail
cmake=$1 build=$2 consumer=$3 compiler=$4 flags=$5

work=$build/consumer
prefix=$work/prefix
rm -rf "$work"
mkdir -p "$work/site" "$work/empty"
printf '<title>Home</title><a href="a.htm">first page</a><img src="no.gif">' >"$work/site/index.htm"
printf '<a href="index.htm#top">home</a> <a href="mailto:ann@example.org">Ann</a>' >"$work/site/a.htm"

"$cmake" --install "$build" --prefix "$prefix" >/dev/null

"$cmake" -S "$consumer" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags" >/dev/null
"$cmake" --build "$work/cmake"
"$work/cmake/consumer" "$work/site/" "$work/db1/"
"$work/cmake/boundary" "$work/empty/"

PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name zvrsit40.pc)")
export PKG_CONFIG_PATH
# shellcheck disable=SC2046,SC2086  # each of these is a list of words
"$compiler" $flags "$consumer/consumer.cc" -o "$work/plain" $(pkg-config --cflags --libs zvrsit40)
LD_LIBRARY_PATH=$(pkg-config --variable=libdir zvrsit40) "$work/plain" "$work/site/" "$work/db2/"
