# 32-bit x86; a 64-bit machine of the family runs the programs itself.
set(architecture i386)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(triplet i386-linux-gnu)
set(compiler_triplet i686-linux-gnu)
set(loader lib/ld-linux.so.2)
include(${CMAKE_CURRENT_LIST_DIR}/sysroot.cmake)
