# 32-bit ARM with hardware floating point; programs run through qemu's emulation of a user's process.
set(architecture armhf)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(triplet arm-linux-gnueabihf)
set(compiler_triplet arm-linux-gnueabihf)
set(loader lib/ld-linux-armhf.so.3)
include(${CMAKE_CURRENT_LIST_DIR}/sysroot.cmake)
set(CMAKE_CROSSCOMPILING_EMULATOR ${made}/tools/qemu-arm-static -L ${CMAKE_SYSROOT})
