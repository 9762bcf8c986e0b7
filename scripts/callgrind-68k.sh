#!/usr/bin/env bash
# Host instructions per emulated 68000 instruction, counted by callgrind: the mixed loop of
# bench/machine_bench.cpp in the frame scheduler's 60-cycle slices and in long slices. Only
# what m68k_execute runs (handlers and bus accesses included) is counted.
#
# Usage: scripts/callgrind-68k.sh [BUILD_DIR]   (a Release build with the benchmarks; default build)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
bench=$build/bin/machine_bench
command -v valgrind >/dev/null || { echo "valgrind is not installed" >&2; exit 1; }
[ -x "$bench" ] || { echo "$bench not built (cmake --build $build --target machine_bench)" >&2; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# measure CYCLES SLICES LABEL: one callgrind run of the fixed loop.
measure() {
    local out="$work/callgrind.$1"
    local emulated
    emulated=$(valgrind --tool=callgrind --callgrind-out-file="$out" --toggle-collect='m68k_execute*' \
        "$bench" --fixed-loop="$1,$2" 2>/dev/null | awk '/^emulated_instructions/ {print $2}')
    local host
    host=$(awk '/^(summary|totals):/ {print $2; exit}' "$out")
    awk -v h="$host" -v e="$emulated" -v l="$3" \
        'BEGIN { printf "%-28s %12d host / %10d emulated = %6.1f host instructions each\n", l, h, e, h / e }'
}

measure 60 20000 "60-cycle slices"
measure 10500 120 "10500-cycle slices"
