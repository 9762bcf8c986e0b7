#!/usr/bin/env bash
# Runs a console program headless: installs what is missing, builds vemo-run (Release, in
# build/) when needed, then runs it with the given arguments, e.g.
#   scripts/vemo-run.sh GAME.j64 --frames 600 --png last.png
set -euo pipefail
top="$(cd "$(dirname "$0")/.." && pwd)"
"$top/scripts/install-deps.sh" >&2
cmake -S "$top" -B "$top/build" -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$top/build" --target vemo-run >/dev/null
exec "$top/build/bin/vemo-run" "$@"
