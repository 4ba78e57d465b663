# 32-bit ARM with hardware floating point; programs run through qemu's emulation of a user's process.
set(architecture armhf)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(triplet arm-linux-gnueabihf)
set(compiler_triplet arm-linux-gnueabihf)
set(loader lib/ld-linux-armhf.so.3)
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi) # g++ remarks that it passed some arguments in another way until version 7
include(${CMAKE_CURRENT_LIST_DIR}/sysroot.cmake)
# Its option -L is not used: libraries are found without it, and it would show programs the sysroot as the folder "/".
set(CMAKE_CROSSCOMPILING_EMULATOR ${made}/tools/qemu-arm-static)
