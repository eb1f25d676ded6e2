#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# headers.sh INCLUDES GENERATED FOLDER: every public header alone, by every compiler and
# language that it is for, without a warning. INCLUDES are those of the SDK, GENERATED the
# headers that are made from the interface definitions; FOLDER is for what is written. Each
# compiler must also refuse a header that has something to warn of.
set -euo pipefail
includes=$1 generated=$2 folder=$3
mkdir -p "$folder"
triplet=x86_64-w64-mingw32
gcc_folder=$(dirname "$("$triplet-g++-posix" -print-libgcc-file-name)")
clang_cpp=(clang++-16 --target="$triplet" -nostdinc++
  -isystem "$gcc_folder/include/c++" -isystem "$gcc_folder/include/c++/$triplet")
checks=0 failures=0 refusals=0

# compile LANGUAGE HEADER COMPILER...: the header alone, with the warnings of a careful client.
compile() {
  local language=$1 header=$2 source
  shift 2
  source=$folder/$(basename "$header" | tr . _).$language
  # Twice: a header guards itself.
  printf '#include "%s"\n#include "%s"\nint main(void) { return 0; }\n' "$header" "$header" >"$source"
  checks=$((checks + 1))
  if ! "$@" -fsyntax-only -Wall -Wextra -Wpedantic -Werror -I "$includes" -I "$generated" "$source"; then
    echo "$header: $*"
    failures=$((failures + 1))
  fi
}

# for_cpp HEADER STANDARD...; for_c HEADER
for_cpp() {
  local header=$1 standard
  shift
  for standard in "$@"; do
    compile cpp "$header" "$triplet-g++-posix" -std="c++$standard" -Wnon-virtual-dtor
    compile cpp "$header" "${clang_cpp[@]}" -std="c++$standard" -Wnon-virtual-dtor
  done
}
for_c() {
  compile c "$1" "$triplet-gcc-posix" -std=c11
  compile c "$1" clang-16 --target="$triplet" -std=c11
}

# refused LANGUAGE TEXT: none of its compilers takes a header with TEXT.
refused() {
  local before=$failures
  printf '#pragma once\n#include "kora4api.h"\n%s\n' "$2" >"$folder/planted.h"
  case $1 in
    cpp) for_cpp "$folder/planted.h" 17 20 2b ;;
    c) for_c "$folder/planted.h" ;;
  esac >"$folder/output" 2>&1
  refusals=$((refusals + failures - before))
  failures=$before
}

for path in "$includes"/*.h "$includes"/*.hpp "$includes"/kora4/*.hpp; do
  header=${path#"$includes/"}
  standards='17 20 2b'
  # What kora4.hpp includes is compiled with it.
  [[ $header != kora4/* ]] || standards=17
  for_cpp "$header" $standards
  case $header in
    *.h) for_c "$header" ;;
  esac
done
for_cpp veltokora4api.h 17 20 2b
for_c veltokora4api.h
# What needs no platform, with the compilers of other platforms.
for standard in 17 20 2b; do
  for compiler in g++ clang++-16; do
    for header in kora4api_constants.h kora4/equalizer.hpp kora4/result_codes.hpp; do
      compile cpp "$header" "$compiler" -std=c++$standard -Wnon-virtual-dtor
    done
  done
done
for compiler in gcc clang-16; do
  compile c kora4api_constants.h "$compiler" -std=c11
done

# What a compiler takes with a warning in it, it would take from us.
planted=$checks
refused cpp 'struct Planted { virtual void Do() = 0; };'
refused c 'struct Planted {};'
planted=$((checks - planted))
[ "$refusals" -eq "$planted" ] || { cat "$folder/output"; echo "headers: $refusals of $planted planted warnings found"; exit 1; }

echo "headers: $((checks - planted)) compilations, $failures failures; $refusals of $planted planted warnings found"
[ "$checks" -gt "$planted" ] && [ "$failures" -eq 0 ]
