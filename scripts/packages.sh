# Sourced by the other scripts: what is missing of the Debian packages named is installed.
#
# require_packages PACKAGE...   asks apt only when something is missing.
# unpack_package PACKAGE        unpacks it into build/trees/PACKAGE, once. It is not installed, as
#                               images of containers leave documentation out. Where it cannot be
#                               had, that is said, and nothing fails.

BUILD_PACKAGES=(g++ cmake ninja-build libgtest-dev libcli11-dev libfmt-dev nlohmann-json3-dev
  libtomlplusplus-dev libcurl4-openssl-dev libsqlite3-dev zlib1g-dev libcpp-httplib-dev libgumbo-dev openssl git nghttp2-server
  pkg-config python3 python3-jsonschema python3-html5lib python-tinycss2-common)
# A browser, for the reports.
BROWSER_PACKAGES=(chromium chromium-driver python3-selenium)
LINT_PACKAGES=(clang-format clang-tidy)
# A site of real pages.
TREE_PACKAGE=python3.11-doc

as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

require_packages() {
  local package missing=()
  for package in "$@"; do
    case $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true) in
      installed*) ;;
      *) missing+=("$package") ;;
    esac
  done
  [ ${#missing[@]} -eq 0 ] && return 0

  echo "installing: ${missing[*]}" >&2
  as_root env DEBIAN_FRONTEND=noninteractive apt-get -q update >&2
  as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get -q install -y --no-install-recommends "${missing[@]}" >&2
}

unpack_package() {
  local tree=build/trees/$1 new
  [ ! -d "$tree" ] || return 0
  mkdir -p build/trees
  new=$(mktemp -d build/trees/new.XXXXXX)
  if { (cd "$new" && apt-get -q download "$1" >&2) ||
       { as_root apt-get -q update >&2 && (cd "$new" && apt-get -q download "$1" >&2); }; } &&
     dpkg-deb -x "$new/$1"_*.deb "$new/tree"; then
    mv "$new/tree" "$tree"
  else
    echo "$1 cannot be fetched: the tests that need it are skipped" >&2
  fi
  rm -rf "$new"
}
