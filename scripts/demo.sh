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

# The home page: the first there is of these, else the first page of the folder.
top=
for name in index.htm index.html default.htm; do
  if [ -z "$top" ] && [ -f "$site/$name" ]; then top=$site/$name; fi
done
if [ -z "$top" ]; then
  top=$(find "$site" \( -iname '*.htm' -o -iname '*.html' \) -type f | LC_ALL=C sort | sed -n 1p)
fi

show add demo "$site" --top "$top"
show rebuild demo
show links demo --from "$top"
show links demo --to "$top"
show broken demo
show unused demo
