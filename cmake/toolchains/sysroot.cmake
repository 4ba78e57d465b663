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

# Programs find their loader and their libraries in the folder, so that the machine needs none of the target's.
set(folders ${CMAKE_SYSROOT}/lib/${triplet}:${CMAKE_SYSROOT}/usr/lib/${triplet})
set(CMAKE_EXE_LINKER_FLAGS_INIT "-Wl,--dynamic-linker=${CMAKE_SYSROOT}/${loader},--disable-new-dtags,-rpath=${folders}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-Wl,-rpath-link=${folders}")

set(ENV{PKG_CONFIG_LIBDIR} ${CMAKE_SYSROOT}/usr/lib/${triplet}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
