#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# violations.sh BUILD WORK TARGET SOURCE [WARNING]: SOURCE compiles as it stands, with the very
# command that BUILD compiles TARGET with, and each of its violations is refused in the words that
# stand below it, by WARNING if that is given.
set -euo pipefail
build=$1 output=$2/output target=$3 source=$4 warning=${5-error}
failures=0
mkdir -p "$2"
command=$(ninja -C "$build" -t commands "$target" | grep -F violations.cpp | tail -n 1)
[ -n "$command" ] || { echo "$target: $build does not compile $source"; exit 1; }

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
  if compiles "$number" || ! grep -F -- "$warning" "$output" | grep -qF -- "$words"; then
    result=1
  fi
  report "$words" "$result"
done < <(sed -n '/^#.*VIOLATION == /{s/.*== //;N;s|\n */* says: |\||p}' "$source")

echo "$violations violations, $failures failures"
[ "$violations" -gt 0 ] && [ "$failures" = 0 ]
