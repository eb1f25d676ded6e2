#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# ctl_pipes_test.sh KORA4CTL KORA4SIM PREFIX: Unix pipes whose reader goes away, and terminals. The
# pool of prefixes keeps programs away from both, so this test has a prefix of its own.
set -uo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../../../scripts/common.sh"
ctl=$1 sim=$2 prefix=$3
make_prefix "$prefix"
export WINEPREFIX=$prefix
errors=$(mktemp)
trap 'rm -f "$errors"; end_prefix "$prefix"' EXIT
failures=0

# expect WANTED GOT WHAT
expect() {
  [ "$1" = "$2" ] && return
  echo "$3: '$2' instead of '$1'"
  failures=$((failures + 1))
}

"$wine64" "$ctl" register >/dev/null 2>&1

# gone CODE PROGRAM ARGUMENT...: it ends silently, with that exit code.
gone() {
  local wanted=$1 codes
  shift
  "$wine64" "$@" 2>"$errors" | true
  codes=("${PIPESTATUS[@]}")
  expect "$wanted" "${codes[0]}" "exit code of $(basename "$1") ${*:2}"
  expect "" "$(tr -d '\r' <"$errors")" "messages of $(basename "$1") ${*:2}"
}
gone 0 "$ctl" set --help
gone 0 "$ctl" list --json
gone 0 "$ctl" dump
gone 5 "$ctl" explain S_OK zzz
gone 0 "$sim" --for 60 --json

# A full disk is something else.
"$wine64" "$ctl" list >/dev/full 2>"$errors"
expect 1 $? "exit code with a full disk"
grep -q "cannot be written" "$errors" || expect "a message" "" "a full disk"

# coloured ENVIRONMENT...: whether a terminal gets colours.
coloured() {
  env TERM=xterm "$@" script -qec "'$wine64' '$ctl' status" /dev/null </dev/null 2>/dev/null |
    grep -q $'\x1b\[3[1-3]m' && echo yes || echo no
}
expect no "$(coloured NO_COLOR=1)" "colours with NO_COLOR"
expect no "$(coloured TERM=dumb)" "colours with TERM=dumb"
# Wine's console counts the sequences as characters.
expect no "$(coloured NO_COLOR=)" "colours under Wine"

echo "$failures failures"
[ "$failures" = 0 ]
