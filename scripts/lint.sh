#!/usr/bin/env bash
# What a compiler does not see:  scripts/lint.sh [format|tidy|alone|includes|words|virtual|reference|cppcheck]...
#
# Without a word all but cppcheck, which finds nothing that clang-tidy does not.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

sources() { git ls-files -- '*.cc' '*.h'; }

# Every source is formatted as .clang-format says.
lint_format() { sources | xargs clang-format --dry-run --Werror; }

# What is built by the preset $1, a line each: not the tests.
built_by() {
  cmake --preset "$1" >/dev/null
  cmake --build --preset "$1" --target zvrsit40_headers zvr_view_texts >/dev/null
  python3 -c 'import json, sys
for step in json.load(open(sys.argv[1])):
    if "/tests/" not in step["file"]:
        print(step["file"])' "build/$1/compile_commands.json"
}

# clang-tidy over the sources on stdin, by the commands of the preset $1, with the checks $2 beside
# those of .clang-tidy.
tidy() {
  xargs -P "$(nproc)" -n 1 clang-tidy --quiet -p "build/$1" --checks="$2" \
    --extra-arg=-Wno-unknown-warning-option 2> >(grep -v 'warnings\? generated' >&2)
}

# The short list of .clang-tidy, over the library and the program, a dozen sources of a room at once:
# it finds the same as in each alone, in half of the time. The longest come first.
lint_tidy() { built_by asan | tac | tidy asan -bugprone-suspicious-include; }

# Each source of the program includes enough for itself. Those of the library are compiled alone in
# a release.
lint_alone() {
  built_by debug | grep -v /build/ | grep -E '/(cli|exports|external|findings|web)/' |
    tidy debug '-*,readability-duplicate-include'
}

# cppcheck over the library and the program; scripts/cppcheck.txt has what it is wrong about.
lint_cppcheck() {
  require_packages cppcheck
  built_by debug >/dev/null
  cppcheck --project=build/debug/compile_commands.json -i tests -i fuzz -i build -j "$(nproc)" --quiet \
    --enable=warning,performance,portability --std=c++20 --suppress='*:/usr/*' --error-exitcode=1 \
    --suppress='*:*/build/*' --suppressions-list=scripts/cppcheck.txt
}

# The rooms include downwards only.
lint_includes() { python3 scripts/check_includes.py; }

# A record file, a table or a record has one virtual function, its destructor: an application is built
# against that.
lint_virtual() { ! git grep -nw virtual -- 'storage/*.h' 'tables/*.h' | grep -v 'virtual ~'; }

# The reference of the library is made without a warning.
lint_reference() { scripts/reference.sh; }

# No path of one machine, and no talk of papers that a reader of this tree does not have.
lint_words() {
  local ok=0
  if git grep -nIE '(^|[^A-Za-z0-9_.$}])/(work|farm|root|tmp/(build|brief))[/-]' -- .; then ok=1; fi
  if git grep -nIiE '\bParts? [0-9]+\.[0-9]|\b(spec|design|style)\.md\b|\bthe spec(ification)?\b' \
    -- . ':!DEVELOPERS.md' ':!scripts/lint.sh'; then ok=1; fi
  return $ok
}

require_packages "${BUILD_PACKAGES[@]}" "${LINT_PACKAGES[@]}"
[ $# -gt 0 ] || set -- words includes virtual format reference alone tidy
for check in "$@"; do
  echo "lint: $check"
  "lint_$check"
done
