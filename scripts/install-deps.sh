#!/usr/bin/env bash
# Installs the Debian packages the project builds, tests and runs with, when any is missing.
# With --fuzz, also clang and its runtime libraries (libFuzzer), which scripts/fuzz.sh needs.
set -euo pipefail

packages=(
  cmake ninja-build g++ binutils         # toolchain (binutils: nm for the export check)
  libgtest-dev libbenchmark-dev          # tests and benchmarks
  libpng-dev libcli11-dev                # vemo-run: PNG output, command line
  binutils-m68k-linux-gnu                # assembling 68000 test programs
  libsdl2-dev                            # vemo-play: window, sound, game controllers
  xvfb xauth xdotool                     # the front-end tests: an X server without a display, keys
  retroarch                              # the libretro core's test: the front-end alone, no cores
)
if [ "${1:-}" = "--fuzz" ]; then
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
  "${sudo_cmd[@]}" apt-get update -qq
  # Without the recommended extras: RetroArch's would add a session-bus service it then tries.
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
