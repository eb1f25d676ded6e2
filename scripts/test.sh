#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# test.sh [CTEST-OPTION...]: installs what is missing, builds the library and all tests,
# and runs them, native and under Wine. CTest's summary comes last; the exit code is its.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

require "${build_needs[@]}" "${wine_needs[@]}" "${test_needs[@]}"
build native all tests/all
build release all tests/all
build fuzz all
# Clang compiles the library and the tools once more and checks the locks.
build clang all

# One run over all trees, so that there is one summary.
all=$root/build/all-tests
mkdir -p "$all"
printf 'subdirs("%s" "%s" "%s" "%s")\n' "$root/build/native" "$root/build/release" \
  "$root/build/fuzz" "$root/build/clang" >"$all/CTestTestfile.cmake"

trap '"$root/scripts/wine-pool.sh" end "$root/build/release/wine-pool" >/dev/null 2>&1' EXIT
# No more tests at a time than there are prefixes: a test that waits for one would time out.
jobs=$(nproc)
[ "$jobs" -le 4 ] || jobs=4
say "running the tests, $jobs at a time"
cd "$all"
ctest --test-dir "$all" --output-on-failure --no-tests=error -j "$jobs" "$@"
