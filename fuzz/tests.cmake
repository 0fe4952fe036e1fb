# The fuzz targets as tests of the normal build: each runs for KESTRINE_FUZZ_SECONDS over its seeds.
# They are built in the clang configuration at KESTRINE_FUZZ_BUILD_DIR (the Makefile's test target
# builds it first); fuzz/run-fuzzer reports a test as skipped only when clang is not installed.
set(KESTRINE_FUZZ_BUILD_DIR "${CMAKE_BINARY_DIR}-fuzz" CACHE PATH
    "Where the clang configuration with KESTRINE_FUZZ=ON builds the fuzz targets")
set(KESTRINE_FUZZ_SECONDS 20 CACHE STRING "How long each fuzz target runs as a test")

foreach(target records dates logstore notificationstate inboxcache diff markdown servermessage
        inlinemarkdown weblinks)
    add_test(NAME fuzz_${target}
        COMMAND ${CMAKE_CURRENT_LIST_DIR}/run-fuzzer --seconds ${KESTRINE_FUZZ_SECONDS}
                ${KESTRINE_FUZZ_BUILD_DIR} ${target})
    math(EXPR limit "${KESTRINE_FUZZ_SECONDS} + 120")
    set_tests_properties(fuzz_${target} PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT ${limit}
        LABELS fuzz)
endforeach()
