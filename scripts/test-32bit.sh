#!/usr/bin/env bash
# Builds the library and the test suite as 32-bit Linux code (g++ -m32, Debian's multilib
# compilers; GoogleTest from its sources) in build-32/ and runs the suite there, so that the
# records' 32-bit layout and the core's behaviour on a 32-bit host are checked by running code.
# The tools and their tests, and the benchmarks, are left out: they need libpng and Google
# Benchmark, which Debian provides for i386 only with the i386 architecture added.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh g++-multilib

jobs=$(nproc)
cmake -S . -B build-32 -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_TOOLCHAIN_FILE=cmake/linux-i686.cmake -DVEMO_BUILD_TOOLS=OFF -DVEMO_BUILD_BENCH=OFF
cmake --build build-32 -j "$jobs"
ctest --test-dir build-32 --output-on-failure -j "$jobs"
