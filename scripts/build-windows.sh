#!/usr/bin/env bash
# Cross-builds the 32-bit Windows library, build-windows/bin/vemocore.dll, with Debian's
# MinGW-w64 compilers (installed when missing), together with the small test front-end
# vemo_frontend.exe, and checks the DLL's export and import tables with the MinGW objdump.
# Extra arguments go to the CMake configure step (e.g. -DCMAKE_CROSSCOMPILING_EMULATOR=...).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh g++-mingw-w64-i686 binutils-mingw-w64-i686

cmake -S . -B build-windows -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-i686.cmake "$@"
cmake --build build-windows -j "$(nproc)"
ctest --test-dir build-windows --output-on-failure -V -R '^windows\.dll_tables$' | grep -E "exports:|imports:|Passed|Failed"
