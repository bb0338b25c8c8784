#!/usr/bin/env bash
# Runs a 32-bit Windows program under the private Wine of setup_wine32.sh:
#   wine32_run.sh HOME PROGRAM [ARGUMENT]...     or     wine32_run.sh HOME --server [OPTION]...
# The code page is that of WINE_LOCALE, by default Japanese: 932. DLLs are found beside the program
# and in WINEPATH, by default the folders of the compiler's runtime.
home=${1:?the folder that setup_wine32.sh filled}
shift
root=$home/root
runtime='Z:\usr\lib\gcc\i686-w64-mingw32\12-posix;Z:\usr\i686-w64-mingw32\lib'
with_wine=(env -u DISPLAY -u WAYLAND_DISPLAY -u WINEDLLPATH
  WINEPREFIX="$home/prefix" WINEARCH=win32 WINEDEBUG="${WINEDEBUG:--all}"
  WINELOADER="$root/usr/lib/wine/wine" WINESERVER="$root/usr/lib/wine/wineserver32"
  WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe,winedbg.exe=d'
  WINEPATH="${WINEPATH-$runtime}"
  LD_LIBRARY_PATH="$root/usr/lib/i386-linux-gnu:$root/lib/i386-linux-gnu"
  LOCPATH="$home/locale" LC_ALL="${WINE_LOCALE:-ja_JP.UTF-8}")
# A superuser without the right to pass over permissions: read-only files are refused as on Windows.
if [ "$(id -u)" = 0 ] && command -v setpriv >/dev/null; then
  with_wine=(setpriv --bounding-set=-dac_override,-dac_read_search "${with_wine[@]}")
fi
if [ "${1-}" = --server ]; then
  shift
  exec "${with_wine[@]}" "$root/usr/lib/wine/wineserver32" "$@"
fi

# The services that Wine starts beside a program keep its stderr open: were it a pipe, its reader
# would wait for them.
errors=$(mktemp)
"${with_wine[@]}" timeout -k 5 "${WINE_TIMEOUT:-300}" "$root/usr/lib/wine/wine" "$@" 2>"$errors"
code=$?
cat "$errors" >&2
rm -f "$errors"
exit $code
