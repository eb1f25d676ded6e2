# SPDX-License-Identifier: MIT
# GoogleTest from Debian's sources, and the function that adds a test program.
set(KORA4_GOOGLETEST /usr/src/googletest CACHE PATH "Where the sources of GoogleTest are")
cmake_host_system_information(RESULT prefixes QUERY NUMBER_OF_LOGICAL_CORES)
if(prefixes LESS 2)
  set(prefixes 2)
elseif(prefixes GREATER 4)
  set(prefixes 4)
endif()
set(KORA4_TEST_PREFIXES ${prefixes} CACHE STRING "Wine prefixes that the tests share")
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(CMAKE_POLICY_DEFAULT_CMP0077 NEW)
add_subdirectory(${KORA4_GOOGLETEST} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)

# Test code is compiled often and runs once, so it is not optimised.
add_library(kora4_test_settings INTERFACE)
target_compile_options(kora4_test_settings INTERFACE $<$<CONFIG:Release>:-O0>)

# The test framework's headers are precompiled once for all programs, unless a compiler cache is
# in use: it cannot cache with precompiled headers.
if(NOT CMAKE_CXX_COMPILER_LAUNCHER)
  file(WRITE ${CMAKE_BINARY_DIR}/test-headers/none.cpp "")
  add_library(kora4_test_headers OBJECT EXCLUDE_FROM_ALL
    ${CMAKE_BINARY_DIR}/test-headers/none.cpp)
  target_link_libraries(kora4_test_headers PRIVATE kora4_platform_settings kora4_warnings
    kora4_test_settings GTest::gtest_main GTest::gmock)
  target_precompile_headers(kora4_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
endif()

if(WIN32)
  set(KORA4_POOL ${PROJECT_SOURCE_DIR}/scripts/wine-pool.sh)
  set(KORA4_POOL_FOLDER ${CMAKE_BINARY_DIR}/wine-pool)
  add_test(NAME wine-prefixes.start
    COMMAND ${KORA4_POOL} start ${KORA4_POOL_FOLDER} ${KORA4_TEST_PREFIXES})
  add_test(NAME wine-prefixes.end COMMAND ${KORA4_POOL} end ${KORA4_POOL_FOLDER})
  set_tests_properties(wine-prefixes.start PROPERTIES
    FIXTURES_SETUP wine-prefixes TIMEOUT 300)
  set_tests_properties(wine-prefixes.end PROPERTIES
    FIXTURES_CLEANUP wine-prefixes TIMEOUT 60)
endif()

# kora4_add_test_program(NAME SOURCES ... [LINK ...]): a test program that something else runs.
function(kora4_add_test_program name)
  cmake_parse_arguments(TEST "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${TEST_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE kora4_platform_settings kora4_warnings
    kora4_test_settings ${TEST_LINK} GTest::gtest_main GTest::gmock)
  if(TARGET kora4_test_headers AND NOT TEST_SOURCES MATCHES "\\.c(;|$)")
    target_precompile_headers(${name} REUSE_FROM kora4_test_headers)
    # A program with settings of its own cannot use the precompiled headers.
    target_compile_options(${name} PRIVATE -Wno-error=invalid-pch)
  endif()
  if(WIN32)
    target_link_options(${name} PRIVATE -static)
  endif()
endfunction()

# kora4_add_to_kit(NAME SECONDS ARGUMENTS): a program that the self-test kit runs.
function(kora4_add_to_kit name seconds arguments)
  set_property(GLOBAL APPEND PROPERTY KORA4_KIT_TARGETS ${name})
  set_property(GLOBAL APPEND_STRING PROPERTY KORA4_KIT_LINES
    "${name}|${seconds}|${arguments}\n")
endfunction()

# kora4_add_test(NAME SOURCES ... [LINK ...] [TIMEOUT s] [LABELS ...] [ARGS ...]
#                [KIT_ARGS ...] [NOT_IN_KIT reason]): a program
# that CTest runs as native.NAME or, for Windows builds, as wine.NAME in a Wine prefix that
# no other test uses at that time. Under Wine the working directory is a folder of its own.
# It is part of the self-test kit (tests/selftest), with the arguments for there, unless there
# is a reason.
function(kora4_add_test name)
  cmake_parse_arguments(TEST "" "TIMEOUT;NOT_IN_KIT" "SOURCES;LINK;LABELS;ARGS;KIT_ARGS" ${ARGN})
  kora4_add_test_program(${name} SOURCES ${TEST_SOURCES} LINK ${TEST_LINK})
  if(NOT TEST_TIMEOUT)
    set(TEST_TIMEOUT 900)
  endif()
  if(WIN32)
    set(test wine.${name})
    set(folder ${CMAKE_BINARY_DIR}/test-work/${name})
    file(MAKE_DIRECTORY ${folder})
    add_test(NAME ${test} WORKING_DIRECTORY ${folder}
      COMMAND ${KORA4_POOL} run ${KORA4_POOL_FOLDER} $<TARGET_FILE:${name}> ${TEST_ARGS})
    set_tests_properties(${test} PROPERTIES FIXTURES_REQUIRED wine-prefixes)
    if(TEST_NOT_IN_KIT)
      set_property(GLOBAL APPEND PROPERTY KORA4_KIT_LEFT_OUT "${name}: ${TEST_NOT_IN_KIT}")
    else()
      list(JOIN TEST_KIT_ARGS " " arguments)
      kora4_add_to_kit(${name} ${TEST_TIMEOUT} "${arguments}")
    endif()
  else()
    set(test native.${name})
    add_test(NAME ${test} COMMAND ${name} ${TEST_ARGS})
  endif()
  set_tests_properties(${test} PROPERTIES TIMEOUT ${TEST_TIMEOUT} LABELS "${TEST_LABELS}")
endfunction()
