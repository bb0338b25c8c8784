#!/usr/bin/env bash
# Packs a build for Windows, unpacks the zip elsewhere, builds the consumers against what was in it,
# and runs them beside the DLLs of the zip alone, through the emulator when one is given:
#   run_zip.sh CMAKE CPACK BUILD_FOLDER SOURCE_FOLDER TOOLCHAIN_FILE COMPILER [EMULATOR]...
set -euo pipefail
cmake=$1 cpack=$2 build=$3 source=$4 toolchain=$5 compiler=$6
shift 6
consumer=$source/tests/consumer
. "$source/tests/package/consumer_site.sh"

work=$build/unpacked
rm -rf "$work" "$build"/zvrsit40-*.zip
make_consumer_site "$work"

(cd "$build" && "$cpack" -G ZIP >/dev/null)
(cd "$work" && "$cmake" -E tar xf "$build"/zvrsit40-*.zip)
prefix=$(echo "$work"/zvrsit40-*)
for file in LICENSE bin/zvrsit40.dll bin/zvrsit.exe bin/libstdc++-6.dll bin/libwinpthread-1.dll \
  lib/libzvrsit40.dll.a include/zvrsit40/zvrsit40.h; do
  [ -s "$prefix/$file" ] || { echo "the zip lacks $file" && exit 1; }
done
compgen -G "$prefix/bin/libgcc_s_*-1.dll" >/dev/null || { echo "the zip lacks libgcc" && exit 1; }

"$cmake" -S "$consumer" -B "$work/cmake" -G Ninja --toolchain "$toolchain" \
  -Dzvrsit40_DIR="$prefix/lib/cmake/zvrsit40" >/dev/null
"$cmake" --build "$work/cmake"
"$compiler" -std=c++20 "$consumer/consumer.cc" -o "$prefix/bin/plain.exe" \
  -I "$prefix/include" -L "$prefix/lib" -lzvrsit40
cp "$work/cmake/consumer.exe" "$work/cmake/boundary.exe" "$prefix/bin"

if [ $# -eq 0 ]; then
  echo "SKIPPED after building: nothing here runs the consumers"
  exit 77
fi
export WINEPATH=
cd "$prefix/bin"
for program in consumer plain; do
  run_consumer "Z:$work" "db.$program" "$@" "./$program.exe"
done
"$@" ./boundary.exe "$(echo "Z:$work/empty/" | tr / '\\')"
"$@" ./zvrsit.exe --version
