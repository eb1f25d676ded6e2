# SPDX-License-Identifier: MIT
# Cross-compilation to 64-bit Windows with clang and lld, using the headers and libraries of
# mingw-w64's GCC.
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64-x86_64.cmake)

set(gcc ${CMAKE_CXX_COMPILER})
set(CMAKE_C_COMPILER clang-16)
set(CMAKE_CXX_COMPILER clang++-16)
set(CMAKE_C_COMPILER_TARGET ${KORA4_TRIPLET})
set(CMAKE_CXX_COMPILER_TARGET ${KORA4_TRIPLET})

# Debian names GCC's folder after the thread model; clang looks for a plain version.
execute_process(COMMAND ${gcc} -print-libgcc-file-name
  OUTPUT_VARIABLE libgcc OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
get_filename_component(gcc_folder ${libgcc} DIRECTORY)
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES
  ${gcc_folder}/include/c++ ${gcc_folder}/include/c++/${KORA4_TRIPLET})
# GCC has no weak symbols here, which turns this off; its library defines the comparison.
set(CMAKE_CXX_FLAGS_INIT -D__GXX_TYPEINFO_EQUALITY_INLINE=0)

# GCC's libraries want its threads. Its linker would report every exception class, whose names
# the two compilers pad differently.
find_program(KORA4_LLD ld.lld-16 REQUIRED)
foreach(kind EXE SHARED)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT
    "-B${gcc_folder} -L${gcc_folder} --ld-path=${KORA4_LLD} -pthread")
endforeach()
