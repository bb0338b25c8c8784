#!/usr/bin/env bash
# Fuzzes what reads files of others:  scripts/fuzz.sh [SECONDS [TARGET...]]
#
# Each target, all of them by default, runs for so long (30), on all processors, from a corpus that
# is kept in build/corpus and begins with the target's own seeds. An input that finds a fault is left
# in build/corpus/found.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

require_packages "${BUILD_PACKAGES[@]}" clang libclang-rt-14-dev
seconds=${1:-30}
shift || true
cmake --preset fuzz >/dev/null
if [ $# -eq 0 ]; then
  for source in fuzz/*_fuzz.cc; do set -- "$@" "$(basename "$source" _fuzz.cc)"; done
fi
cmake --build --preset fuzz --target "${@/#/fuzz_}"

# One target: $1, for $2 seconds.
fuzz() {
  local corpus=build/corpus/$1
  mkdir -p "$corpus" build/corpus/found
  "build/fuzz/fuzz/fuzz_$1" --seeds "$corpus"
  if "build/fuzz/fuzz/fuzz_$1" -max_total_time="$2" -timeout=20 -rss_limit_mb=4096 -max_len=65536 \
    -print_final_stats=1 -verbosity=0 -artifact_prefix="build/corpus/found/$1-" "$corpus" \
    >"build/corpus/$1.log" 2>&1; then
    echo "fuzz: $1: $(grep -o 'number_of_executed_units: *[0-9]*' "build/corpus/$1.log" | grep -o '[0-9]*$') inputs, nothing found"
  else
    tail -n 40 "build/corpus/$1.log"
    echo "fuzz: $1: FOUND, see build/corpus/found"
    return 1
  fi
}
export -f fuzz
printf '%s\n' "$@" | xargs -P "$(nproc)" -I{} bash -c 'fuzz "$@"' fuzz {} "$seconds"
