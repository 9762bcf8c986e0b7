#!/usr/bin/env bash
# Builds the libFuzzer targets of tests/fuzz with clang, AddressSanitizer and
# UndefinedBehaviorSanitizer (build-fuzz/), then runs each for a fixed time, e.g.
#   scripts/fuzz.sh            every target for 20 s (what CI runs)
#   scripts/fuzz.sh 3600 fuzz_cartridge -- -runs=10000000
# Arguments: seconds per target (default 20), target names (default all), and after "--" more
# libFuzzer options. Each target starts from its seed corpus in tests/fuzz/corpus/<target> and
# keeps what it finds in build-fuzz/corpus/<target>; an input that crashes, trips a sanitizer,
# hangs or makes a frame too slow lands in build-fuzz/artifacts/<target>/ and fails the script.
# Each target runs alone on its corpus, so it never rereads the folder for other processes'
# finds (-reload=0): with tens of thousands of inputs there, that took a quarter of each run.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh --fuzz

seconds=${1:-20}
[ $# -gt 0 ] && shift
targets=()
while [ $# -gt 0 ] && [ "$1" != "--" ]; do targets+=("$1"); shift; done
[ "${1:-}" = "--" ] && shift
[ ${#targets[@]} -eq 0 ] && targets=(fuzz_cartridge fuzz_object_list fuzz_registers fuzz_risc fuzz_blitter)

cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVEMO_FUZZ=ON \
  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DVEMO_BUILD_TESTS=OFF -DVEMO_BUILD_BENCH=OFF >/dev/null
cmake --build build-fuzz -j "$(nproc)" --target "${targets[@]}"

status=0
for target in "${targets[@]}"; do
  corpus=build-fuzz/corpus/$target
  artifacts=build-fuzz/artifacts/$target
  mkdir -p "$corpus" "$artifacts"
  echo "== $target: ${seconds} s"
  if ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
     "build-fuzz/bin/$target" -max_total_time="$seconds" -timeout=60 -rss_limit_mb=2048 -reload=0 \
       -print_final_stats=1 -artifact_prefix="$artifacts/" "$@" \
       "$corpus" "tests/fuzz/corpus/$target" >"build-fuzz/$target.log" 2>&1; then
    grep -E "^stat::(number_of_executed_units|average_exec_per_sec)" "build-fuzz/$target.log" || true
  else
    echo "$target FAILED; its log: build-fuzz/$target.log; inputs: $artifacts/"
    tail -n 40 "build-fuzz/$target.log"
    status=1
  fi
done
exit $status
