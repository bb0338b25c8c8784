#!/usr/bin/env bash
# Puts a private 32-bit Wine into a folder:  setup_wine32.sh FOLDER
#
# Its packages are unpacked there, not installed: the machine needs no foreign architecture, and gets
# libc6-i386 and locales only. The last line is "wine32: ready" (exit 0) or "wine32: SKIPPED (why)"
# (exit 77); a folder that is ready is left as it is.
set -uo pipefail
scripts=$(cd "$(dirname "$0")" && pwd)
. "$scripts/packages.sh"

suite=bookworm
packages=(wine32 libwine libz-mingw-w64 libfreetype6 libfontconfig1 libexpat1 libpng16-16 libbrotli1
  zlib1g)

skip() {
  echo "wine32: SKIPPED ($1)"
  exit 77
}

home=$(mkdir -p "${1:?folder}" && cd "$1" && pwd) && [ "$home" != / ] || skip "no folder $1"
root=$home/root

# Downloads the packages of the other architecture with an apt of our own: lists, cache and
# sources below the folder.
download() {
  local uri apt=$home/apt
  uri=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' "Codename: $suite" \
    'Component: main' | head -n 1)
  [ -n "$uri" ] || skip "no main suite of $suite is configured"
  mkdir -p "$apt"/{state/lists/partial,cache/archives/partial} "$home/debs"
  : >"$apt/status"
  echo "deb [arch=i386 signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $uri $suite main" \
    >"$apt/sources.list"
  local own=(-qq -o Dir::State="$apt/state" -o Dir::State::status="$apt/status"
    -o Dir::Cache="$apt/cache" -o Dir::Etc::sourcelist="$apt/sources.list"
    -o Dir::Etc::sourceparts=/dev/null -o Dir::Etc::preferences=/dev/null
    -o Dir::Etc::preferencesparts=/dev/null -o APT::Architecture=i386
    -o APT::Architectures=i386 -o APT::Sandbox::User=root -o Acquire::Languages=none
    -o Acquire::Retries=3)
  apt-get "${own[@]}" update || { sleep 10 && apt-get "${own[@]}" update; } ||
    skip "the package index of i386 is not to be had"
  (cd "$home/debs" && apt-get "${own[@]}" download "${packages[@]}") ||
    skip "the packages of i386 are not to be had"
}

unpack() {
  local package
  for package in "$home"/debs/*.deb; do
    dpkg -x "$package" "$root" || skip "$package cannot be unpacked"
  done
  # As the package would when it is installed: zlib1.dll is marked as one of Wine's own.
  local from=$root/usr/i686-w64-mingw32/lib/zlib1.dll
  local to=$root/usr/lib/i386-linux-gnu/wine/i386-windows/zlib1.dll
  {
    head -c 64 "$from"
    printf 'Wine builtin DLL\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0'
    tail -c +97 "$from"
  } >"$to" || skip "zlib1.dll cannot be marked"
  ln -sf wineserver32 "$root/usr/lib/wine/wineserver"
}

# The locale gives Wine its code page, 932.
make_locale() {
  mkdir -p "$home/locale"
  [ -d "$home/locale/ja_JP.UTF-8" ] || localedef -i ja_JP -f UTF-8 "$home/locale/ja_JP.UTF-8" ||
    skip "there is no Japanese locale"
}

# Windows as they are made there, with a screen that nobody sees.
boot() {
  rm -rf "$home/prefix"
  timeout -k 5 180 unshare --pid --fork --mount-proc --kill-child bash -c '
    "$0" "$1" wineboot -i &&
    "$0" "$1" reg add "HKCU\Software\Wine\Drivers" /v Graphics /d null /f &&
    "$0" "$1" --server -w' "$scripts/wine32_run.sh" "$home" >"$home/boot.log" 2>&1 ||
    skip "it does not start, see $home/boot.log"
}

if [ ! -e "$home/ready" ]; then
  require_packages libc6-i386 locales || skip "libc6-i386 and locales cannot be installed"
  rm -rf "$root" "$home/debs"
  download
  unpack
  make_locale
  boot
  rm -rf "$home/debs" "$home/apt"
  touch "$home/ready"
fi
echo "wine32: ready"
