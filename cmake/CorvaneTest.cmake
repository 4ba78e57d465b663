# How every test program is built and registered, in one place.
include(GoogleTest)

# The tests that this build cannot run: ctest names them as not run, scripts/test tells the reasons besides.
set(CORVANE_TESTS_NOT_RUN)
if(CMAKE_CROSSCOMPILING_EMULATOR)
    file(STRINGS ${PROJECT_SOURCE_DIR}/tests/not-run-in-the-emulator.txt CORVANE_TESTS_NOT_RUN REGEX "^[^# ]")
endif()

# corvane_test_options(TARGET): test code is compiled often and runs for milliseconds, so not optimising it saves half the
# time of a build.
function(corvane_test_options target)
    # The C library's bounds need the optimiser.
    target_compile_options(${target} PRIVATE -O0 -U_FORTIFY_SOURCE)
endfunction()

# corvane_test(NAME SOURCES file... [LIBRARIES library...] LABELS label... [ENVIRONMENT VAR=value...] [FIXTURE name])
# Every test of the program becomes a test of ctest with these labels, run in a process of its own. A test that needs
# root carries the label "root" besides.
function(corvane_test name)
    cmake_parse_arguments(PARSE_ARGV 1 test "" "TIMEOUT;FIXTURE" "SOURCES;LIBRARIES;LABELS;ENVIRONMENT")
    if(NOT test_TIMEOUT)
        set(test_TIMEOUT 120)
    endif()
    add_executable(${name} ${test_SOURCES})
    corvane_target(${name})
    corvane_test_options(${name})
    target_link_libraries(${name} PRIVATE ${test_LIBRARIES} corvane-test-support GTest::gtest_main)
    target_precompile_headers(${name} REUSE_FROM corvane-test-support)
    if(CORVANE_SANITIZERS MATCHES thread)
        list(APPEND test_ENVIRONMENT "TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/tsan.supp")
    endif()
    gtest_discover_tests(${name} NO_PRETTY_VALUES DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 TEST_PREFIX ${name}.
                         PROPERTIES TIMEOUT ${test_TIMEOUT})
    set(not_run ${CORVANE_TESTS_NOT_RUN})
    list(FILTER not_run INCLUDE REGEX "^${name}\\.")
    list(JOIN not_run " " not_run)
    set(disable)
    if(not_run)
        set(disable "set_tests_properties(${not_run} PROPERTIES DISABLED TRUE)")
    endif()
    # Lists do not survive gtest_discover_tests; they do in a file that ctest reads once it knows the tests.
    set(properties ${CMAKE_CURRENT_BINARY_DIR}/${name}-properties.cmake)
    file(WRITE ${properties} "if(${name}_TESTS)
    set_tests_properties(\${${name}_TESTS} PROPERTIES LABELS \"${test_LABELS}\" ENVIRONMENT \"${test_ENVIRONMENT}\"
                         FIXTURES_REQUIRED \"${test_FIXTURE}\")
    ${disable}
endif()
")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${properties})
endfunction()

# corvane_test_programs(TEST TARGET...): programs of this build that a test starts. The test gets the path of hello-window
# as HELLO_WINDOW, and so on.
function(corvane_test_programs test)
    foreach(program ${ARGN})
        string(MAKE_C_IDENTIFIER ${program} name)
        string(TOUPPER ${name} name)
        corvane_startable_path(path ${program})
        target_compile_definitions(${test} PRIVATE ${name}="${path}")
        add_dependencies(${test} ${program})
    endforeach()
endfunction()

# corvane_startable_path(VARIABLE TARGET): the path by which any process of this machine can start the program. Where
# programs need an emulator that is a script that starts it there, under its own name.
function(corvane_startable_path variable program)
    if(NOT CMAKE_CROSSCOMPILING_EMULATOR)
        set(${variable} $<TARGET_FILE:${program}> PARENT_SCOPE)
        return()
    endif()
    set(script ${PROJECT_BINARY_DIR}/emulated/${program})
    set(${variable} ${script} PARENT_SCOPE)
    get_target_property(has_script ${program} CORVANE_HAS_SCRIPT)
    if(NOT has_script)
        list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
        file(GENERATE OUTPUT ${script}
             CONTENT "#!/bin/sh\nexec ${emulator} -0 \"$0\" $<TARGET_FILE:${program}> \"$@\"\n"
             FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
        set_target_properties(${program} PROPERTIES CORVANE_HAS_SCRIPT TRUE)
    endif()
endfunction()
