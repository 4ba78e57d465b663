# How every test program is built and registered, in one place.
include(GoogleTest)

# corvane_test(NAME SOURCES file... [LIBRARIES library...] LABELS label... [ENVIRONMENT VAR=value...])
# Every test of the program becomes a test of ctest with these labels, run in a process of its own. A test that needs
# root carries the label "root" besides.
function(corvane_test name)
    cmake_parse_arguments(PARSE_ARGV 1 test "" "TIMEOUT" "SOURCES;LIBRARIES;LABELS;ENVIRONMENT")
    if(NOT test_TIMEOUT)
        set(test_TIMEOUT 120)
    endif()
    add_executable(${name} ${test_SOURCES})
    corvane_target(${name})
    target_link_libraries(${name} PRIVATE ${test_LIBRARIES} corvane-test-support GTest::gmock GTest::gtest_main)
    if(CORVANE_SANITIZERS MATCHES thread)
        list(APPEND test_ENVIRONMENT "TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/tsan.supp")
    endif()
    gtest_discover_tests(${name} NO_PRETTY_VALUES DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 TEST_PREFIX ${name}.
                         PROPERTIES TIMEOUT ${test_TIMEOUT})
    # Lists do not survive gtest_discover_tests; they do in a file that ctest reads once it knows the tests.
    set(properties ${CMAKE_CURRENT_BINARY_DIR}/${name}-properties.cmake)
    file(WRITE ${properties} "if(${name}_TESTS)
    set_tests_properties(\${${name}_TESTS} PROPERTIES LABELS \"${test_LABELS}\" ENVIRONMENT \"${test_ENVIRONMENT}\")
endif()
")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${properties})
endfunction()
