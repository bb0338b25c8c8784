#!/usr/bin/env bash
# Private 32-bit Wine in $1 (no foreign architecture, no dpkg change but libc6-i386).
# Last line: "wine32: ready" (exit 0) or "wine32: SKIPPED (why)" (exit 77).
set -uo pipefail
W=${1:?folder}; R=$W/root; S=bookworm
mkdir -p "$W" && W=$(cd "$W" && pwd) && R=$W/root
skip() { echo "wine32: SKIPPED ($1)"; exit 77; }
[ -e "$W/ok" ] && { echo "wine32: ready"; exit 0; }
dpkg -s libc6-i386 locales >/dev/null 2>&1 || apt-get -o DPkg::Lock::Timeout=300 install -y -qq --no-install-recommends libc6-i386 locales >/dev/null || skip "no libc6-i386/locales"
URI=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' "Codename: $S" 'Component: main' | head -1)
[ -n "$URI" ] || skip "no $S main suite configured"
mkdir -p "$W"/apt/{state/lists/partial,cache/archives/partial} "$W/debs" "$R"; : > "$W/apt/status"
echo "deb [arch=i386 signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $URI $S main" > "$W/apt/sources.list"
A=(-o Dir::State="$W/apt/state" -o Dir::State::status="$W/apt/status" -o Dir::Cache="$W/apt/cache"
   -o Dir::Etc::sourcelist="$W/apt/sources.list" -o Dir::Etc::sourceparts=/dev/null
   -o Dir::Etc::preferences=/dev/null -o Dir::Etc::preferencesparts=/dev/null
   -o APT::Architecture=i386 -o APT::Architectures=i386 -o APT::Sandbox::User=root
   -o Acquire::Languages=none -o Acquire::Retries=3)
for t in 1 2 3; do apt-get "${A[@]}" -qq update 2>"$W/apt/err" && break; [ $t = 3 ] && skip "i386 index not to be had"; sleep 10; done
(cd "$W/debs" && apt-get "${A[@]}" -qq download wine32 libwine libz-mingw-w64 libfreetype6 libfontconfig1 libexpat1 libpng16-16 libbrotli1 zlib1g) 2>"$W/apt/err" || skip "i386 packages not to be had"
for d in "$W"/debs/*.deb; do dpkg -x "$d" "$R" || skip "unpack $d"; done
# what libwine's postinst does: mark zlib1.dll as a Wine builtin
i=$R/usr/i686-w64-mingw32/lib/zlib1.dll o=$R/usr/lib/i386-linux-gnu/wine/i386-windows/zlib1.dll
{ head -c 64 "$i"; printf 'Wine builtin DLL\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0'; tail -c +97 "$i"; } > "$o" || skip "zlib1.dll"
# Debian's wrapper script names /usr/lib/wine/wineserver* by absolute path
ln -sf wineserver32 "$R/usr/lib/wine/wineserver"
mkdir -p "$W/locale" && { [ -d "$W/locale/ja_JP.UTF-8" ] || localedef -i ja_JP -f UTF-8 "$W/locale/ja_JP.UTF-8"; } || skip localedef
rm -rf "$W/debs" "$W/apt"
timeout -k 5 180 unshare --pid --fork --mount-proc --kill-child bash -c '
  w=$0; rm -rf "$1"/prefix; "$w" "$1" wineboot -i && "$w" "$1" reg add "HKCU\Software\Wine\Drivers" /v Graphics /d null /f && "$w" "$1" --server -w' \
  "$(dirname "$(readlink -f "$0")")/wine32_run.sh" "$W" >"$W/boot.log" 2>&1 || skip "wineboot failed, see $W/boot.log"
touch "$W/ok"; echo "wine32: ready"
