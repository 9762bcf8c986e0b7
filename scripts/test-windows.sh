#!/usr/bin/env bash
# The Windows checks: builds vemocore.dll and the test front-end (scripts/build-windows.sh),
# makes 32-bit wine available, then runs the checks of build-windows: the DLL's export and
# import tables, and the front-end loading the DLL and running a test program under wine.
#
# wine: Debian's wine32 needs the i386 architecture. When apt cannot install wine32 as it
# stands (on some mirrors the i386 index lags behind the amd64 one), a private copy of wine's
# 32-bit packages is unpacked into build-windows/wine instead; nothing of the system is removed
# or downgraded either way.
set -euo pipefail
cd "$(dirname "$0")/.."
top="$(pwd)"
scripts/build-windows.sh -DCMAKE_CROSSCOMPILING_EMULATOR="$top/scripts/wine-run.sh"

sudo_cmd=()
[ "$(id -u)" -ne 0 ] && sudo_cmd=(sudo)
apt_install() {
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-remove "$@"
}

private_wine() {
  local root="$top/build-windows/wine" debs="$top/build-windows/wine-debs"
  apt_install libc6:i386
  rm -rf "$root" "$debs"
  mkdir -p "$debs"
  (cd "$debs" && apt-get download wine32:i386 libwine:i386 libz-mingw-w64)
  for deb in "$debs"/*.deb; do dpkg-deb -x "$deb" "$root"; done
  # The server script names Debian's install path; the zlib DLL becomes one of wine's builtins
  # (marked as such in its header, as wine's own install does), without which user32 fails.
  sed -i "s|/usr/lib/wine/|$root/usr/lib/wine/|g" "$root/usr/lib/wine/wineserver"
  local zlib="$root/usr/lib/i386-linux-gnu/wine/i386-windows/zlib1.dll"
  cp "$root/usr/i686-w64-mingw32/lib/zlib1.dll" "$zlib"
  printf 'Wine builtin DLL' | dd of="$zlib" bs=1 seek=64 count=16 conv=notrunc status=none
  rm -rf "$debs"
}

if [ ! -x /usr/lib/wine/wine ] && [ ! -x build-windows/wine/usr/lib/wine/wine ]; then
  if ! dpkg --print-foreign-architectures | grep -qx i386; then
    "${sudo_cmd[@]}" dpkg --add-architecture i386
  fi
  "${sudo_cmd[@]}" apt-get update -qq || echo "apt-get update reported a problem; going on" >&2
  if ! apt_install wine wine32:i386; then
    echo "Debian's wine32 cannot be installed here: unpacking a private copy into build-windows/wine" >&2
    private_wine
  fi
fi

ctest --test-dir build-windows --output-on-failure -V | grep -E "^[0-9]+: (vemo_frontend|FAILED|-- |program mode|cartridge mode| +[0-9]+ frames)|Test +#|tests passed|tests failed"
