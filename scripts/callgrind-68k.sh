#!/usr/bin/env bash
# Host instructions per emulated instruction, counted by callgrind: the 68000's mixed loop of
# bench/machine_bench.cpp in the frame scheduler's 60-cycle slices and in long slices, and the
# GPU's and the DSP's loops in their frame slices. Only what m68k_execute (gpu_execute,
# dsp_execute) runs, handlers and bus accesses included, is counted.
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

# measure OPTION FUNCTION CYCLES SLICES LABEL: one callgrind run of a fixed loop.
measure() {
    local out="$work/callgrind.$1$3"
    local emulated
    emulated=$(valgrind --tool=callgrind --callgrind-out-file="$out" --toggle-collect="$2*" \
        "$bench" "$1=$3,$4" 2>/dev/null | awk '/^emulated_instructions/ {print $2}')
    local host
    host=$(awk '/^(summary|totals):/ {print $2; exit}' "$out")
    awk -v h="$host" -v e="$emulated" -v l="$5" \
        'BEGIN { printf "%-28s %10d host / %10d emulated = %6.1f host instructions each\n", l, h, e, h / e }'
}

measure --fixed-loop m68k_execute 60 20000 "68000, 60-cycle slices"
measure --fixed-loop m68k_execute 10500 120 "68000, 10500-cycle slices"
measure --fixed-gpu-loop gpu_execute 120 4000 "GPU, 120-cycle slices"
measure --fixed-dsp-loop dsp_execute 844 600 "DSP, 844-cycle slices"
