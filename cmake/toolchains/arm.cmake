# Linux on 64-bit ARM, built on Debian by g++-aarch64-linux-gnu and run by qemu-user. zlib comes from Debian's package
# of that architecture (dpkg --add-architecture arm64, zlib1g-dev:arm64).
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_FIND_ROOT_PATH /usr/aarch64-linux-gnu)
# On the processor that qemu 7.2 takes by itself threads stand still.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -cpu cortex-a72 -L /usr/aarch64-linux-gnu)
