#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# selftest.sh BUILD WORK: violations.cpp compiles as it stands, with the very command that BUILD
# compiles it with, and each of its violations is refused in the words that stand below it.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=$1 output=$2/output
failures=0
mkdir -p "$2"
command=$(ninja -C "$build" -t commands locks_selftest | grep -F violations.cpp | tail -n 1)
[ -n "$command" ] || { echo "locks: $build does not compile violations.cpp"; exit 1; }

# compiles NUMBER: whether violations.cpp does with that violation.
compiles() {
  (cd "$build" && eval "$command -fsyntax-only -DVIOLATION=$1") >"$output" 2>&1
}

report() {
  if [ "$2" = 0 ]; then
    echo "ok      $1"
  else
    echo "FAILED  $1"
    sed 's/^/        /' "$output"
    failures=$((failures + 1))
  fi
}

result=0
compiles 0 || result=1
report 'no violation' "$result"

violations=0
while IFS='|' read -r number words; do
  violations=$((violations + 1))
  result=0
  if compiles "$number" || ! grep -F -- '[-Werror,-Wthread-safety' "$output" | grep -qF -- "$words"; then
    result=1
  fi
  report "$words" "$result"
done < <(sed -n '/^#.*VIOLATION == /{s/.*== //;N;s|\n */* says: |\||p}' "$here/violations.cpp")

echo "$violations violations, $failures failures"
[ "$violations" -gt 0 ] && [ "$failures" = 0 ]
