# Cross build for arm64 Linux with Debian's cross compiler; programs run under user-mode emulation.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_FIND_ROOT_PATH /usr/aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(VXS_ARM64_EMULATOR NAMES qemu-aarch64-static qemu-aarch64)
set(CMAKE_CROSSCOMPILING_EMULATOR ${VXS_ARM64_EMULATOR} -L /usr/aarch64-linux-gnu)
