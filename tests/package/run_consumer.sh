#!/usr/bin/env bash
# Installs the library into a prefix of its own, and is then an application of somebody else's:
#   run_consumer.sh CMAKE BUILD_FOLDER SOURCE_FOLDER COMPILER EXTRA_FLAGS
set -euo pipefail
cmake=$1 build=$2 source=$3 compiler=$4 flags=$5
consumer=$source/tests/consumer
. "$source/tests/package/consumer_site.sh"

work=$build/consumer
prefix=$work/prefix
rm -rf "$work"
make_consumer_site "$work"
"$cmake" --install "$build" --prefix "$prefix" >/dev/null
include=$prefix/include
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name zvrsit40.pc)")
export PKG_CONFIG_PATH
library=$(pkg-config --variable=libdir zvrsit40)
version=$(pkg-config --modversion zvrsit40)

# Found as a CMake package.
"$cmake" -S "$consumer" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags" >/dev/null
"$cmake" --build "$work/cmake"
run_consumer "$work" db1 "$work/cmake/consumer"
"$work/cmake/boundary" "$work/empty/"

# Found through pkg-config, which leaves the language to the application, by an application that has
# files of its own with the names of ours.
for header in $(cd "$include/zvrsit40" && find . -name '*.h'); do
  mkdir -p "$work/own/$(dirname "$header")"
  echo '#error "a header of the library took a file of the application"' >"$work/own/$header"
done
for standard in c++20 c++23; do
  # shellcheck disable=SC2046,SC2086  # each of these is a list of words
  "$compiler" -std=$standard $flags -I "$work/own" $(pkg-config --cflags zvrsit40) \
    "$consumer/consumer.cc" -o "$work/plain" $(pkg-config --libs zvrsit40)
  LD_LIBRARY_PATH=$library run_consumer "$work" "db.$standard" "$work/plain"
done

# Each header can be included alone, whatever the compiler warns of.
headers=$(cd "$include" && find zvrsit40* -name '*.h')
for other in g++ clang++; do
  command -v "$other" >/dev/null || continue
  for header in $headers; do
    echo "#include <$header>" |
      "$other" -std=c++20 -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Werror -I "$include" -x c++ - ||
      { echo "$header does not compile alone with $other" && exit 1; }
  done
done

# Another minor version before 1.0 is another library to the loader. The installed program finds the
# library by itself; the library looks for nothing in folders of its own.
dynamic() { readelf -d "$1" | sed -n "s/.*($2).*\[\(.*\)\]/\1/p"; }
expect() { [ "$1" = "$2" ] || { echo "expected $2, and there is $1" && exit 1; }; }
abi=${version%%.*}
if [ "$abi" = 0 ]; then abi=${version%.*}; fi
expect "$(dynamic "$library/libzvrsit40.so" SONAME)" "libzvrsit40.so.$abi"
expect "$(dynamic "$library/libzvrsit40.so" RUNPATH)" ""
expect "$(pkg-config --cflags zvrsit40 | grep -e -std || true)" ""  # which would be the last word
if [ -e "$prefix/bin/zvrsit" ]; then
  expect "$("$prefix/bin/zvrsit" --version)" "zvrsit $version"
  expect "$(dynamic "$prefix/bin/zvrsit" RUNPATH)" \
    "\$ORIGIN/$(realpath --relative-to="$prefix/bin" "$library")"
fi

# What docs/library.md shows is that application.
shown=$(sed -n '/^    #include <zvrsit40/,/^Compile/ {/^Compile/d; s/^    //; p}' "$source/docs/library.md")
diff <(echo "$shown") <(sed -n '/^#include <zvrsit40/,$p' "$consumer/consumer.cc")
