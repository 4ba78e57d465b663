# How every target of the project is compiled, in one place.

# corvane_fast_sources(SOURCE...): those of a library that a remote call and its notification run through. A release
# compiles the rest of a library for size, which costs time here: docs/footprint.md has the figures.
function(corvane_fast_sources)
    set_property(SOURCE ${ARGN} APPEND PROPERTY COMPILE_OPTIONS $<$<CONFIG:Release>:-O2>)
endfunction()

if(CORVANE_HARDENING)
    include(CheckCXXCompilerFlag)
    include(CheckPIESupported)
    check_cxx_compiler_flag(-fcf-protection=full CORVANE_HAS_CF_PROTECTION) # x86 has it
    check_pie_supported(LANGUAGES CXX)
endif()

# corvane_harden(TARGET): bounds of the C library's buffers, canaries on the stack, addresses that nobody can guess, tables of
# the linker that nobody can write to, and branches that end where a function begins.
function(corvane_harden target)
    target_compile_options(${target} PRIVATE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong
                                             $<$<BOOL:${CORVANE_HAS_CF_PROTECTION}>:-fcf-protection=full>)
    target_link_options(${target} PRIVATE -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
    set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
endfunction()

# corvane_target(NAME): language level, warnings, hidden visibility, the sanitizers of this build and what its processor
# asks for.
function(corvane_target name)
    target_compile_features(${name} PUBLIC cxx_std_20)
    set_target_properties(${name} PROPERTIES CXX_EXTENSIONS OFF CXX_VISIBILITY_PRESET hidden
                                             VISIBILITY_INLINES_HIDDEN ON)
    target_compile_options(${name} PRIVATE -Wall -Wextra -Wpedantic $<$<BOOL:${CORVANE_WARNINGS_AS_ERRORS}>:-Werror>)
    # Where a preset has several files of a program compiled at once, each of them is an included one; the warning is about
    # classes in those that use what is in an unnamed namespace.
    if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        target_compile_options(${name} PRIVATE -Wno-subobject-linkage)
    endif()
    # On 32 bits, a file's length and its inode number need 64: what an application prints passes 2 GiB in time. Only these
    # change their size, and no public header has them; the time stays as it is, for DirectFB's events hold one.
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
        target_compile_definitions(${name} PRIVATE _FILE_OFFSET_BITS=64)
    endif()
    # Without these tables, a back trace ends at the first function that throws nothing.
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
        target_compile_options(${name} PRIVATE -funwind-tables)
    endif()
    # What a box gets has no code that nothing reaches. The everyday builds keep it, and link faster.
    set(optimisation -O2)
    get_target_property(type ${name} TYPE)
    if(type STREQUAL SHARED_LIBRARY)
        set(optimisation -Os)
    endif()
    target_compile_options(${name} PRIVATE $<$<CONFIG:Release>:${optimisation};-ffunction-sections;-fdata-sections>)
    target_link_options(${name} PRIVATE $<$<CONFIG:Release>:-Wl,--gc-sections>)
    if(CORVANE_HARDENING)
        corvane_harden(${name})
    endif()
    if(CORVANE_SANITIZERS)
        target_compile_options(${name} PRIVATE -fsanitize=${CORVANE_SANITIZERS} -fno-omit-frame-pointer)
        target_link_options(${name} PRIVATE -fsanitize=${CORVANE_SANITIZERS})
        if(CORVANE_SANITIZERS MATCHES undefined)
            target_compile_options(${name} PRIVATE -fno-sanitize-recover=undefined)
        endif()
    endif()
endfunction()

# corvane_bind_at_link(LIBRARY): the functions that a library has, and calls or has in its tables, are bound when it is
# linked, instead of being looked up by name at each start; and it exports nothing that only its own tables and templates
# need. Variables are still looked up: all libraries of a process share one instance of them.
function(corvane_bind_at_link library)
    set(exports ${PROJECT_SOURCE_DIR}/cmake/exports.map)
    target_link_options(${library} PRIVATE LINKER:-Bsymbolic-functions LINKER:--version-script=${exports})
    set_property(TARGET ${library} APPEND PROPERTY LINK_DEPENDS ${exports})
endfunction()

# corvane_library(NAME ALIAS [EXPORT COMPONENT]): a library, its alias corvane::ALIAS and what is installed of it. EXPORT
# names the targets file of the package that tells of it and COMPONENT what it is installed with, for a library that a box
# may go without.
function(corvane_library name alias)
    set(export corvane-targets)
    set(component runtime)
    if(ARGC GREATER 2)
        set(export ${ARGV2})
        set(component ${ARGV3})
    endif()
    add_library(${name})
    add_library(corvane::${alias} ALIAS ${name})
    corvane_target(${name})
    set_target_properties(${name} PROPERTIES EXPORT_NAME ${alias} VERSION ${PROJECT_VERSION}
                                             SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
    # The libraries are compiled as a box compiles them; their files also have constants of the same names.
    set_target_properties(${name} PROPERTIES UNITY_BUILD OFF)
    # A static library may become a part of a shared one.
    set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    corvane_bind_at_link(${name})
    install(TARGETS ${name} EXPORT ${export} LIBRARY COMPONENT ${component} NAMELINK_COMPONENT development
                                             ARCHIVE COMPONENT development)
endfunction()
