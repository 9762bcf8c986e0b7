#!/usr/bin/env bash
# Runs a Windows program under 32-bit wine without a display, as the Windows checks' emulator:
#   scripts/wine-run.sh PROGRAM.exe [ARGUMENTS...]
# Uses Debian's wine32 when it is installed, else the private copy that scripts/test-windows.sh
# unpacks into build-windows/wine. The wine prefix is build-windows/wine-prefix (created by the
# first run, which takes some seconds); the wine server is stopped afterwards. The exit status
# is the program's.
set -uo pipefail
top="$(cd "$(dirname "$0")/.." && pwd)"
root=""
[ -x /usr/lib/wine/wine ] || root="$top/build-windows/wine"
if [ ! -x "$root/usr/lib/wine/wine" ]; then
  echo "wine-run: no 32-bit wine found; scripts/test-windows.sh installs one" >&2
  exit 127
fi

export WINEPREFIX="${WINEPREFIX:-$top/build-windows/wine-prefix}"
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
# wine reports missing fonts and prefix updates on stderr: only the program's own lines pass.
env -u DISPLAY timeout 300 "$root/usr/lib/wine/wine" "$@" \
  2> >(grep -v -e FreeType -e freetype.org -e "use TrueType fonts" -e "or equal to 2.0.5" \
               -e "^wine: configuration in" -e "^wine: created the configuration" >&2)
status=$?
"$root/usr/lib/wine/wineserver" -k 2>/dev/null
exit $status
