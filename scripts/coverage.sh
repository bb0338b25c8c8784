#!/usr/bin/env bash
# Which lines and branches the tests reach:  scripts/coverage.sh [ROOM...] [-- CTEST OPTION...]
#
# Runs all tests, or those that the options name, and prints a table for each room (storage and
# manager, where none is named); then each branch that was not reached, with its line. The pages of
# build/coverage/report.html show them in the sources. Branches that only a thrown exception takes
# are left out.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

require_packages "${BUILD_PACKAGES[@]}" gcovr
rooms=()
while [ $# -gt 0 ] && [ "$1" != -- ]; do rooms+=("$1") && shift; done
[ $# -eq 0 ] || shift
[ ${#rooms[@]} -gt 0 ] || rooms=(storage manager)

cmake --preset coverage >/dev/null
cmake --build --preset coverage
find build/coverage -name '*.gcda' -delete
ctest --preset coverage -j "$(nproc)" "$@" || echo "coverage: not all tests have passed" >&2
json=build/coverage/coverage.json
gcovr --root . --object-directory build/coverage --json "$json" --exclude-throw-branches \
  --exclude-unreachable-branches --exclude 'tests/.*' --exclude 'build/.*' -j "$(nproc)"
gcovr --root . --add-tracefile "$json" --html-details build/coverage/report.html >/dev/null
for room in "${rooms[@]}"; do
  gcovr --root . --add-tracefile "$json" --filter "$room/.*" --branches
done
python3 - "$json" "${rooms[@]}" <<'END'
import json, sys
rooms = tuple(room + "/" for room in sys.argv[2:])
for file in json.load(open(sys.argv[1]))["files"]:
    if not file["file"].startswith(rooms):
        continue
    source = open(file["file"], encoding="utf-8").read().splitlines()
    for line in file["lines"]:
        missed = sum(branch["count"] == 0 for branch in line["branches"])
        if missed or (line["count"] == 0 and not line.get("gcovr/noncode")):
            number = line["line_number"]
            print(f"{file['file']}:{number}: {missed} of {len(line['branches'])}: {source[number - 1].strip()}")
END
