# Cross build for 32-bit Windows with Debian's MinGW-w64 compilers (g++-mingw-w64-i686):
#   cmake -S . -B build-windows -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-i686.cmake
# The 68000 table generator still runs on the build machine: it is built with the build
# machine's own compiler (see src/m68k/CMakeLists.txt).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)

set(VEMO_MINGW_PREFIX i686-w64-mingw32)
set(CMAKE_C_COMPILER ${VEMO_MINGW_PREFIX}-gcc)
set(CMAKE_CXX_COMPILER ${VEMO_MINGW_PREFIX}-g++)
set(CMAKE_RC_COMPILER ${VEMO_MINGW_PREFIX}-windres)
set(CMAKE_OBJDUMP ${VEMO_MINGW_PREFIX}-objdump CACHE FILEPATH "objdump for PE files")

# Libraries and headers come from the MinGW tree only; programs from the build machine.
set(CMAKE_FIND_ROOT_PATH /usr/${VEMO_MINGW_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
