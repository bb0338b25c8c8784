#!/usr/bin/env bash
# What a compiler does not see:  scripts/lint.sh [format|tidy|includes|words|virtual|reference]...  (all without a word)
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

sources() { git ls-files -- '*.cc' '*.h'; }

# Every source is formatted as .clang-format says.
lint_format() { sources | xargs clang-format --dry-run --Werror; }

# The short list of .clang-tidy, over the library and the program, each source alone: what it includes
# is enough for it. The example reads the headers that the build writes.
lint_tidy() {
  cmake --preset debug >/dev/null
  cmake --build --preset debug --target zvrsit40_headers >/dev/null
  git ls-files -- '*.cc' ':!tests' ':!bench' ':!fuzz' ':!*_win32.cc' |
    xargs -P "$(nproc)" -n 1 clang-tidy --quiet -p build/debug --extra-arg=-Wno-unknown-warning-option 2> >(grep -v 'warnings\? generated' >&2)
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
[ $# -gt 0 ] || set -- words includes virtual format reference tidy
for check in "$@"; do
  echo "lint: $check"
  "lint_$check"
done
