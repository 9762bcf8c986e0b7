# 32-bit Linux build on a 64-bit Debian host with the multilib compilers (g++-multilib):
#   cmake -S . -B build-32 -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/linux-i686.cmake
# The programs run on the build machine, so nothing counts as cross-compiled. Debian ships
# GoogleTest only as 64-bit libraries: the tests build it from its sources instead.
set(CMAKE_C_FLAGS_INIT -m32)
set(CMAKE_CXX_FLAGS_INIT -m32)
set(CMAKE_EXE_LINKER_FLAGS_INIT -m32)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -m32)
set(CMAKE_MODULE_LINKER_FLAGS_INIT -m32)
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(VEMO_GTEST_SOURCE_DIR /usr/src/googletest CACHE PATH "GoogleTest sources, built with the tests")
