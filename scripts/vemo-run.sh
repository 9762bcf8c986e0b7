#!/usr/bin/env bash
# Runs a console program headless: installs what is missing, builds vemo-run (Release, in
# build/) when needed, then runs it with the given arguments, e.g.
#   scripts/vemo-run.sh GAME.j64 --frames 600 --png last.png
# With no argument it runs the built-in demo cartridge for 600 frames (ten seconds of console
# time) with sound, and writes demo.png, demo.wav and the demo's save file demo.eeprom (a start
# counter) into the current folder.
set -euo pipefail
top="$(cd "$(dirname "$0")/.." && pwd)"
"$top/scripts/install-deps.sh" >&2
cmake -S "$top" -B "$top/build" -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$top/build" --target vemo-run >/dev/null
if [ $# -eq 0 ]; then
  set -- --frames 600 --audio --eeprom demo.eeprom --png demo.png --wav demo.wav
fi
exec "$top/build/bin/vemo-run" "$@"
