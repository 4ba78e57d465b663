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
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 TEST_PREFIX ${name}.
                         PROPERTIES LABELS "${test_LABELS}" ENVIRONMENT "${test_ENVIRONMENT}" TIMEOUT ${test_TIMEOUT})
endfunction()
