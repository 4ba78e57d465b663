# A compiler cache, where one is installed: what another checkout of the same commit has compiled is not compiled again.

# A launcher that the user names, the empty one included, is left alone.
if(DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
    return()
endif()
find_program(CORVANE_CCACHE NAMES ccache DOC "Compiler cache")
mark_as_advanced(CORVANE_CCACHE)
if(NOT CORVANE_CCACHE)
    return()
endif()

# Paths below the checkout count as relative ones, and the folder of the build does not count, so that a checkout in
# another place finds the same objects; their debug information then names the place that compiled them first. A
# precompiled header is known by its content and by the macros that were defined for it.
set(CMAKE_CXX_COMPILER_LAUNCHER
    ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1
    CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime ${CORVANE_CCACHE})
