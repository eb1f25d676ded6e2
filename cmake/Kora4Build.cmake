# SPDX-License-Identifier: MIT
# Compiler settings, and the function that defines a module of the library.

if(WIN32)
  # A toolchain that is not the project's need not say it.
  if(NOT KORA4_TRIPLET)
    set(KORA4_TRIPLET x86_64-w64-mingw32)
  endif()
  # Equal sources give equal files, whenever and wherever they are built: no time, no path.
  add_link_options(-Wl,--no-insert-timestamp)
  add_compile_options(
    $<$<AND:$<CONFIG:Release>,$<COMPILE_LANGUAGE:C,CXX>>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=>)
endif()

# Warnings are errors in every target of the project.
add_library(kora4_warnings INTERFACE)
target_compile_options(kora4_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wsign-conversion
  $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>
  $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-Wthread-safety;-Wthread-safety-beta>)

# Platform definitions of every target of the project.
add_library(kora4_platform_settings INTERFACE)
if(WIN32)
  target_compile_definitions(kora4_platform_settings INTERFACE
    UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX COBJMACROS
    WINVER=0x0A00 _WIN32_WINNT=0x0A00)
elseif(KORA4_SANITIZE)
  target_compile_options(kora4_platform_settings INTERFACE
    -fsanitize=${KORA4_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kora4_platform_settings INTERFACE -fsanitize=${KORA4_SANITIZE})
endif()

# Instrumented code counts atomically, because several threads run it. Each process writes its
# counts to a folder of its own when it ends or unloads the library, because gcov does not lock
# the files that it writes. scripts/coverage.sh adds them up.
set(coverage
  -O0 --coverage -fprofile-update=atomic
  "-fprofile-dir=${CMAKE_BINARY_DIR}/counts/%q{KORA4_TEST_PREFIX}-%p"
  -fprofile-prefix-path=${CMAKE_BINARY_DIR})

# The library runs inside other people's processes: no exceptions, no run-time type
# information, no guarded statics (each costs the host a TLS index per load).
add_library(kora4_library_settings INTERFACE)
target_compile_options(kora4_library_settings INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-threadsafe-statics>
  -ffunction-sections -fdata-sections
  $<$<CONFIG:Release>:-O2>
  "$<$<BOOL:${KORA4_COVERAGE}>:${coverage}>")
target_link_options(kora4_library_settings INTERFACE $<$<BOOL:${KORA4_COVERAGE}>:--coverage>)

# kora4_add_module(NAME SOURCES ... [LINK ...]): one module under src/, a static library
# that sees src/ and sdk/include/ as include roots.
function(kora4_add_module name)
  cmake_parse_arguments(MODULE "" "" "SOURCES;LINK" ${ARGN})
  add_library(${name} STATIC ${MODULE_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src
                                            ${PROJECT_SOURCE_DIR}/sdk/include)
  target_link_libraries(${name} PUBLIC kora4_platform_settings ${MODULE_LINK}
                                PRIVATE kora4_warnings kora4_library_settings)
endfunction()
