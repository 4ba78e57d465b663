# Builds for another processor with what scripts/sysroot has unpacked. The file of an architecture names it, its triplets,
# its processor and its loader, and includes this one. The compiler is the cross g++, unless one is given, such as clang.
set(made ${CMAKE_CURRENT_LIST_DIR}/../../build/sysroots/${architecture})
cmake_path(ABSOLUTE_PATH made NORMALIZE)
if(NOT EXISTS ${made}/lock)
    message(FATAL_ERROR "Libraries and a compiler for ${architecture} are missing. First run: scripts/sysroot ${architecture}")
endif()

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSROOT ${made}/target)
set(CMAKE_LIBRARY_ARCHITECTURE ${triplet})

if(NOT CMAKE_CXX_COMPILER)
    set(CMAKE_CXX_COMPILER ${made}/tools/bin/${compiler_triplet}-g++)
endif()
set(CMAKE_CXX_COMPILER_TARGET ${compiler_triplet}) # g++ has it in its name
foreach(tool AR NM OBJCOPY RANLIB READELF STRIP)
    string(TOLOWER ${tool} name)
    set(CMAKE_${tool} ${made}/tools/bin/${compiler_triplet}-${name})
endforeach()

# What is tested here finds its loader and the target's libraries in the folder, so that this machine needs none of them.
# What a box gets, a build without tests, finds those of the box.
set(folders ${CMAKE_SYSROOT}/lib/${triplet}:${CMAKE_SYSROOT}/usr/lib/${triplet})
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-Wl,-rpath-link=${folders}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-Wl,-rpath-link=${folders}")
if(NOT DEFINED CORVANE_BUILD_TESTS OR CORVANE_BUILD_TESTS)
    set(CMAKE_SHARED_LINKER_FLAGS_INIT "-Wl,--disable-new-dtags,-rpath=${folders}")
    set(CMAKE_EXE_LINKER_FLAGS_INIT "${CMAKE_SHARED_LINKER_FLAGS_INIT},--dynamic-linker=${CMAKE_SYSROOT}/${loader}")
endif()

set(ENV{PKG_CONFIG_LIBDIR} ${CMAKE_SYSROOT}/usr/lib/${triplet}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
