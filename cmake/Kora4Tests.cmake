# GoogleTest from Debian's sources, and one function that makes a test program.
set(KORA4_GOOGLETEST /usr/src/googletest CACHE PATH "Where the sources of GoogleTest are")
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(CMAKE_POLICY_DEFAULT_CMP0077 NEW)
add_subdirectory(${KORA4_GOOGLETEST} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)

# kora4_add_test(NAME SOURCES ... [LINK ...] [TIMEOUT s] [LABELS ...]): a program that
# CTest runs, under Wine for Windows builds. Test programs share the machine-wide store of
# their Wine prefix, so they take turns.
function(kora4_add_test name)
  cmake_parse_arguments(TEST "" "TIMEOUT" "SOURCES;LINK;LABELS;ARGS" ${ARGN})
  add_executable(${name} ${TEST_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE kora4_platform_settings kora4_warnings
                                        ${TEST_LINK} GTest::gtest_main GTest::gmock)
  if(NOT TEST_TIMEOUT)
    set(TEST_TIMEOUT 300)
  endif()
  if(WIN32)
    target_link_options(${name} PRIVATE -static)
    add_test(NAME ${name}
      COMMAND ${PROJECT_SOURCE_DIR}/scripts/wine-run.sh ${CMAKE_BINARY_DIR}/wine
              $<TARGET_FILE:${name}> ${TEST_ARGS})
    set_tests_properties(${name} PROPERTIES RESOURCE_LOCK wine-prefix)
  else()
    add_test(NAME ${name} COMMAND ${name} ${TEST_ARGS})
  endif()
  set_tests_properties(${name} PROPERTIES TIMEOUT ${TEST_TIMEOUT} LABELS "${TEST_LABELS}")
endfunction()
