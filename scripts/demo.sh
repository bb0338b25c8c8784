#!/usr/bin/env bash
# The main job on the example site, or on a folder of your own:  scripts/demo.sh [FOLDER]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
site=$(realpath -- "${1:-$root/examples/site}")
cd "$root"
. scripts/packages.sh

require_packages "${BUILD_PACKAGES[@]}"
cmake --preset release >/dev/null
cmake --build --preset release --target zvrsit
zvrsit=build/release/cli/zvrsit

db=$(mktemp -d)
trap 'rm -rf "$db"' EXIT

# Shows a command, then runs it. 1 is "there are findings": here that is an answer, not a failure.
show() {
  printf '\n$ zvrsit %s\n' "$*"
  "$zvrsit" --db "$db" "$@" || [ $? -eq 1 ]
}

# The top file: index.htm or index.html where there is one, else the first page.
top=$(cd "$site" && ls index.htm index.html default.htm 2>/dev/null | head -n 1 || true)
if [ -z "$top" ]; then
  top=$(cd "$site" && find . -iname '*.htm' -o -iname '*.html' | LC_ALL=C sort | sed -n '1s|^\./||p')
fi

show add demo "$site" --top "$site/$top"
show rebuild demo
show links demo --from "$site/$top"
show links demo --to "$site/$top"
show broken demo
show unused demo
