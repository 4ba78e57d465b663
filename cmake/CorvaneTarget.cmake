# How every target of the project is compiled, in one place.

# corvane_target(NAME): language level, warnings, hidden visibility and the sanitizers of this build.
function(corvane_target name)
    target_compile_features(${name} PUBLIC cxx_std_20)
    set_target_properties(${name} PROPERTIES CXX_EXTENSIONS OFF CXX_VISIBILITY_PRESET hidden
                                             VISIBILITY_INLINES_HIDDEN ON)
    target_compile_options(${name} PRIVATE -Wall -Wextra -Wpedantic $<$<BOOL:${CORVANE_WARNINGS_AS_ERRORS}>:-Werror>)
    if(CORVANE_SANITIZERS)
        target_compile_options(${name} PRIVATE -fsanitize=${CORVANE_SANITIZERS} -fno-omit-frame-pointer)
        target_link_options(${name} PRIVATE -fsanitize=${CORVANE_SANITIZERS})
        if(CORVANE_SANITIZERS MATCHES undefined)
            target_compile_options(${name} PRIVATE -fno-sanitize-recover=undefined)
        endif()
    endif()
endfunction()

# corvane_library(SHORT): a shared library corvane-SHORT (or corvane itself), its alias and what is installed of it.
function(corvane_library name alias)
    add_library(${name} SHARED)
    add_library(corvane::${alias} ALIAS ${name})
    corvane_target(${name})
    set_target_properties(${name} PROPERTIES EXPORT_NAME ${alias} VERSION ${PROJECT_VERSION}
                                             SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
    install(TARGETS ${name} EXPORT corvane-targets)
endfunction()
