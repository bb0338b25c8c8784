# Sourced by the other scripts: what is missing of the Debian packages named is installed.
#
# require_packages PACKAGE...   asks apt only when something is missing.

BUILD_PACKAGES=(g++ cmake ninja-build libgtest-dev libcli11-dev libfmt-dev nlohmann-json3-dev
  libtomlplusplus-dev libcurl4-openssl-dev libsqlite3-dev zlib1g-dev libcpp-httplib-dev libgumbo-dev openssl git nghttp2-server
  pkg-config python3 python3-jsonschema python3-html5lib python-tinycss2-common)
# A browser, for the reports.
BROWSER_PACKAGES=(chromium chromium-driver python3-selenium)
LINT_PACKAGES=(clang-format clang-tidy)

require_packages() {
  local package missing=()
  for package in "$@"; do
    case $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true) in
      installed*) ;;
      *) missing+=("$package") ;;
    esac
  done
  [ ${#missing[@]} -eq 0 ] && return 0

  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then as_root=(sudo); fi
  echo "installing: ${missing[*]}" >&2
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q update >&2
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get -q install -y --no-install-recommends "${missing[@]}" >&2
}
