#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# ctl_completion_test.sh RUN...: what bash offers at each place of a command line of kora4ctl.
# RUN is the command that runs the program.
set -uo pipefail

script=$("$@" completion bash) || { echo "completion bash fails"; exit 1; }
script=${script//$'\r'/}
bash -n <<<"$script" || { echo "the script is no valid bash"; exit 1; }
eval "$script"
complete -p kora4ctl kora4ctl.exe >/dev/null || { echo "nothing is registered"; exit 1; }

failures=0
checks=0

# offered WORD...: what is offered in place of the last word, sorted, between blanks.
offered() {
  COMP_WORDS=(kora4ctl "$@")
  COMP_CWORD=$#
  COMPREPLY=()
  _kora4ctl 2>/dev/null
  printf '%s\n' "${COMPREPLY[@]}" | sort | tr '\n' ' ' | sed 's/ $//'
}

# expect "WORDS" WORD...: just these are offered.
expect() {
  local wanted=$1 got
  shift
  got=$(offered "$@")
  checks=$((checks + 1))
  [ "$got" = "$wanted" ] && return
  echo "kora4ctl $*: '$got' instead of '$wanted'"
  failures=$((failures + 1))
}

# expect_among "WORDS" WORD...: these are among what is offered.
expect_among() {
  local wanted=$1 got word
  shift
  got=" $(offered "$@") "
  for word in $wanted; do
    checks=$((checks + 1))
    [[ $got == *" $word "* ]] && continue
    echo "kora4ctl $*: '$word' is not among '$got'"
    failures=$((failures + 1))
  done
}

expect_among "status get set toggle profile demo eq watch dump doctor lint completion" ""
expect "profile" pro
expect "undo unregister" un
expect "A B save" ab ""
expect "A B save" ab save ""
expect "copy create delete list rename revert show use" profile ""
expect "off on show" trace ""
expect_among "profile volume-leveler volume-leveler.on engine-mask trace-flags" get ""
expect_among "enable" get profile ena
expect "intelligent-eq intelligent-eq.frequencies intelligent-eq.level intelligent-eq.on" get intelligent-eq
expect "off on" set enable ""
expect "on" set enable on
expect "balanced bright focused off on open rich warm" set intelligent-eq ""
expect_among "music demo-games p6" get --profile ""
expect_among "music demo-games p6" get --profile = ""
expect "music" get --profile = mu
expect_among "music p1" get --profile =
expect_among "volume-leveler" get --profile music vol
expect "games movie music p1 p2 p3 p4 p5 p6" profile use ""
expect "p1 p2 p3 p4 p5 p6" profile delete ""
expect "" profile delete p1 ""
expect "games movie music" demo enter ""
expect_among "messages results all" trace on ""
expect "results" trace on messages --files res
expect_among "KORA4ASL RegKeyMonitor" trace show --module ""
expect "--follow" trace show --fo
expect_among "--json --quiet --help --dry-run --deep --wait" doctor --
expect "" doctor --wait ""
expect "bash fish powershell zsh" completion ""
expect_among "status profile doctor" help ""
expect "" status ""
expect "" nonsense ""

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
touch "$folder/one setting.json" "$folder/other.json"
cd "$folder" || exit 1
expect "one setting.json other.json" load ""
expect "other.json" diff oth
expect "other.json" register oth

[ "$checks" -gt 40 ] || { echo "only $checks checks"; failures=$((failures + 1)); }
echo "$checks checks, $failures failures"
[ "$failures" = 0 ]
