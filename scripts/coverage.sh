#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# coverage.sh [CTEST-OPTION...]: installs what is missing, builds the library instrumented,
# runs the tests under Wine, and prints which lines and branches of src/ they do not reach,
# file by file, each such line with the reason (tests/coverage/unreached.txt), and the totals. Exits 0
# only if every test passes, every line has its reason and the limits below are met.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

least_lines=98
least_branches=90
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
# Windows programs find the paths of this machine on drive Z:.
GCOV_PREFIX=Z: ctest --test-dir "$tree" --output-on-failure --no-tests=error -j "$jobs" \
  --label-exclude check "$@" || failed=1

# add FOLDER: adds the counts of one process to the sum. A process that was killed while it wrote
# leaves a file that cannot be read.
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
[ -d "${processes[0]}" ] || die "no test has left any counts; see the output of the tests above."
say "adding up the counts of ${#processes[@]} processes"
rm -rf "$sum"
for process in "${processes[@]}"; do
  add "$process"
done
[ "$left_out" = 0 ] || say "$left_out of them could not be read, because the processes were killed while they wrote"

# The names of the files have "#" in place of the separators of their paths.
for file in "$sum"/*.gcda; do
  name=${file##*/}
  cp "$file" "$tree/${name//\#//}"
done

report=$tree/coverage.json
gcovr --root "$root" --object-directory "$tree" --gcov-executable "$gcov" \
  --filter "$root/src/" --json "$report" "$tree/src" ||
  die "gcovr cannot read the counts; its messages are above (if the compiler has changed, remove build/coverage and try again)."
say "lines, and those that no test reaches"
gcovr --root "$root" --add-tracefile "$report" --txt
say "the lines that no test reaches, and why"
explained=1
perl "$root/tests/coverage/unreached.pl" "$root" "$report" "$root/tests/coverage/unreached.txt" ||
  explained=0
say "branches, and the lines with some that no test takes"
gcovr --root "$root" --add-tracefile "$report" --branches --txt
say "totals; required are $least_lines % of the lines and $least_branches % of the branches"
gcovr --root "$root" --add-tracefile "$report" --print-summary --output /dev/null \
  --fail-under-line "$least_lines" --fail-under-branch "$least_branches" ||
  die "too little of src/ is reached; the tables above say what is missing."
[ "$explained" = 1 ] || die "tests/coverage/unreached.txt does not give the reasons; see above."
[ "$failed" = 0 ] || die "some tests failed; see above."
