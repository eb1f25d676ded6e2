#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# coverage.sh [CTEST-OPTION...]: installs what is missing, builds the library instrumented,
# runs the tests under Wine, and prints which lines and branches of src/ they do not reach,
# file by file, and the totals. Exits 0 only if every test passes and enough is reached.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

least_lines=95
least_branches=85
gcov=x86_64-w64-mingw32-gcov-posix
gcov_tool=x86_64-w64-mingw32-gcov-tool-posix

require "${build_needs[@]}" "${wine_needs[@]}" "${test_needs[@]}" "gcovr|gcovr"
build coverage all tests/all

tree=$root/build/coverage
counts=$tree/counts # a folder for each process
sum=$tree/counts.sum
rm -rf "$counts"
find "$tree" -name '*.gcda' -delete

trap '"$root/scripts/wine-pool.sh" end "$tree/wine-pool" >/dev/null 2>&1' EXIT
jobs=$(nproc)
[ "$jobs" -le 4 ] || jobs=4
failed=0
say "running the tests, $jobs at a time"
# The drive on which a Windows program finds the paths of this machine.
GCOV_PREFIX=Z: ctest --test-dir "$tree" --output-on-failure --no-tests=error -j "$jobs" \
  --label-exclude check "$@" || failed=1

# add FOLDER: one process's counts to the sum. One that was cut off while it wrote has left
# a file that cannot be read.
left_out=0
add() {
  rm -rf "$sum.next"
  if [ ! -d "$sum" ]; then
    cp -r "$1" "$sum"
  elif "$gcov_tool" merge -o "$sum.next" "$sum" "$1" 2>"$tree/counts.log"; then
    rm -rf "$sum"
    mv "$sum.next" "$sum"
  else
    left_out=$((left_out + 1))
  fi
}

processes=("$counts"/*/)
[ -d "${processes[0]}" ] || die "no test has left any count; look at the tests' output above."
say "adding up the counts of ${#processes[@]} processes"
rm -rf "$sum"
for process in "${processes[@]}"; do
  add "$process"
done
[ "$left_out" = 0 ] || say "$left_out of them could not be read, because they were ended while they wrote"

# In a file's name the separators of its path are "#".
for file in "$sum"/*.gcda; do
  name=${file##*/}
  cp "$file" "$tree/${name//\#//}"
done

report=$tree/coverage.json
gcovr --root "$root" --object-directory "$tree" --gcov-executable "$gcov" \
  --filter "$root/src/" --json "$report" "$tree/src" ||
  die "gcovr cannot read the counts; its messages are above (after a change of compilers remove build/coverage and try again)."
say "lines, and those that no test reaches"
gcovr --root "$root" --add-tracefile "$report" --txt
say "branches, and the lines with some that no test takes"
gcovr --root "$root" --add-tracefile "$report" --branches --txt
say "in all, where at least $least_lines % of the lines and $least_branches % of the branches are asked for"
gcovr --root "$root" --add-tracefile "$report" --print-summary --output /dev/null \
  --fail-under-line "$least_lines" --fail-under-branch "$least_branches" ||
  die "too little of src/ is reached; the tables above say what is missing."
[ "$failed" = 0 ] || die "some tests failed; see above."
