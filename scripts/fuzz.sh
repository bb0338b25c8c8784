#!/usr/bin/env bash
# Fuzzes what reads files and answers of others:  scripts/fuzz.sh [SECONDS [TARGET...]]
#
# Each target, all of them by default, runs for so long (30), on all processors, from a corpus that
# is kept in build/corpus and begins with the target's own seeds, and with the words of the sources
# that it runs. An input that finds a fault is left in build/corpus/found;
# build/fuzz/fuzz/fuzz --target=NAME FILE looks into it.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

require_packages "${BUILD_PACKAGES[@]}" clang libclang-rt-14-dev
seconds=${1:-30}
shift || true
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target fuzz
if [ $# -eq 0 ]; then
  for source in fuzz/*_fuzz.cc; do set -- "$@" "$(basename "$source" _fuzz.cc)"; done
fi

# The sources that a target runs, as far as words of them help it.
sources() {
  case $1 in
    answers) echo external/*.cc ;;
    config) echo cli/config.cc cli/external_options.cc findings/rules.h ;;
    css) echo css/*.cc ;;
    html | site) echo dom/*.h dom/*.cc links/*.cc ;;
    report) echo findings/*.cc web/*.cc ;;
    text) echo links/redirect_rules.cc repair/journal.cc manager/update_note.cc util/web_date.cc ;;
    url) echo links/*.cc external/url.cc findings/url_check.cc ;;
    *) echo /dev/null ;;
  esac
}

# One target: $1, for $2 seconds. It works in a folder of its own, so all names are absolute.
fuzz() {
  local corpus=$PWD/build/corpus fuzz=build/fuzz/fuzz/fuzz
  mkdir -p "$corpus/$1" "$corpus/found"
  "$fuzz" --target="$1" --seeds "$corpus/$1"
  # shellcheck disable=SC2046
  grep -Eho '"[^"\\]{2,24}"' $(sources "$1") | sort -u >"$corpus/$1.words" || true
  if "$fuzz" --target="$1" -dict="$corpus/$1.words" -max_total_time="$2" -timeout=20 \
    -rss_limit_mb=4096 -max_len=16384 -print_final_stats=1 -verbosity=0 \
    -artifact_prefix="$corpus/found/$1-" "$corpus/$1" >"$corpus/$1.log" 2>&1; then
    echo "fuzz: $1: $(grep -o 'number_of_executed_units: *[0-9]*' "$corpus/$1.log" | grep -o '[0-9]*$') inputs, nothing found"
  else
    tail -n 40 "$corpus/$1.log"
    echo "fuzz: $1: FOUND, see build/corpus/found"
    return 1
  fi
}
export -f fuzz sources
printf '%s\n' "$@" | xargs -P "$(nproc)" -I{} bash -c 'fuzz "$@"' fuzz {} "$seconds"
