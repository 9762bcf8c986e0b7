#!/usr/bin/env bash
# Installs what is missing, then builds and runs every test twice: a Release build (build/),
# and a build with AddressSanitizer and UndefinedBehaviorSanitizer (build-sanitize/); then runs
# each fuzz target for 20 s (scripts/fuzz.sh, build-fuzz/).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh

jobs=$(nproc)

cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release
cmake --build build -j "$jobs"
ctest --test-dir build --output-on-failure -j "$jobs"

cmake -S . -B build-sanitize -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DVEMO_SANITIZE=ON -DVEMO_BUILD_BENCH=OFF
cmake --build build-sanitize -j "$jobs"
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
  ctest --test-dir build-sanitize --output-on-failure -j "$jobs"

# Each fuzz target for a short fixed time (clang, libFuzzer, both sanitizers; build-fuzz/).
scripts/fuzz.sh 20
