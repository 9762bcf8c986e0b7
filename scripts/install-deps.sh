#!/usr/bin/env bash
# Installs the Debian packages the project builds, tests and runs with, when any is missing;
# packages named as arguments are installed too (the Windows and 32-bit scripts add theirs).
# With --fuzz first, also clang and its runtime libraries (libFuzzer), which scripts/fuzz.sh needs.
set -euo pipefail

fuzz=0
if [ "${1:-}" = "--fuzz" ]; then
  fuzz=1
  shift
fi

packages=(
  cmake ninja-build g++ binutils         # toolchain (binutils: nm for the export check)
  libgtest-dev libbenchmark-dev          # tests and benchmarks
  libpng-dev libcli11-dev                # vemo-run: PNG output, command line
  nettle-dev libsndfile1-dev             # vemo-run: frame digests (SHA-256), WAV output
  binutils-m68k-linux-gnu                # assembling 68000 test programs
  valgrind                               # scripts/callgrind-68k.sh: host instructions counted
  libsdl2-dev                            # vemo-play: window, sound, game controllers
  xvfb xauth xdotool                     # the front-end tests: an X server without a display, keys
  retroarch                              # the libretro core's test: the front-end alone, no cores
  pkgconf                                # the installed package's test builds with pkg-config
  "$@"
)
if [ "$fuzz" -eq 1 ]; then
  packages+=(clang libclang-rt-dev)      # fuzz targets: clang, libFuzzer and the sanitizers
fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  sudo_cmd=()
  [ "$(id -u)" -ne 0 ] && sudo_cmd=(sudo)
  # A stale index of a foreign architecture (i386, added for wine) makes the update exit non-zero
  # although the main index is fine: go on, and let the install say if something is missing.
  "${sudo_cmd[@]}" apt-get update -qq || echo "apt-get update reported a problem; installing anyway" >&2
  # Without the recommended extras: RetroArch's would add a session-bus service it then tries.
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
