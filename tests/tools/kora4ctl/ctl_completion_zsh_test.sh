#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# ctl_completion_zsh_test.sh RUN...: what zsh offers at each place of a command line of kora4ctl.
# RUN is the command that runs the program.
set -uo pipefail

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
"$@" completion zsh | tr -d '\r' >"$folder/kora4ctl.zsh"
cat >"$folder/test.zsh" <<'TEST'
# What the completion system calls, so that it can be tried without a terminal.
compdef() { registered="$*" }
compadd() { shift; offered+=("$@") }
_files() { offered+=(FILES) }
compset() { PREFIX=${PREFIX#*=} }
source $1
[[ $registered == '_kora4ctl kora4ctl kora4ctl.exe' ]] || { print "nothing is registered"; exit 1 }
integer failures=0 checks=0

# expect "WORDS" WORD...: just these are offered in place of the last word; "+" before: among others.
expect() {
    local wanted=$1 word got
    shift
    typeset -ga words=(kora4ctl "$@") offered=()
    typeset -g CURRENT=$#words PREFIX=$words[-1]
    _kora4ctl
    [[ $offered == FILES ]] || offered=(${(o)${(M)offered:#$PREFIX*}})
    got="$offered"
    checks+=1
    if [[ $wanted == +* ]]; then
        for word in ${=wanted#+}; do
            [[ " $got " == *" $word "* ]] && continue
            print "$*: '$word' is not among '$got'"
            failures+=1
        done
    elif [[ $got != $wanted ]]; then
        print "$*: '$got' instead of '$wanted'"
        failures+=1
    fi
}

expect profile prof
expect '+status get profile completion help' ''
expect 'off on show' trace ''
expect '+volume-leveler engine-mask' get ''
expect '+enable' get profile ''
expect 'off on' set enable ''
expect 'balanced bright focused off on open rich warm' set intelligent-eq ''
expect '+music demo-games' get --profile ''
expect '+music' get --profile=mu
expect '+volume-leveler' get --profile music vol
expect 'games movie music p1 p2 p3 p4 p5 p6' profile use ''
expect '' profile delete p1 ''
expect --follow trace show --fo
expect '+--json --quiet --deep --wait' doctor --
expect 'bash fish powershell zsh' completion ''
expect FILES load ''
expect '' status ''
expect '' nonsense ''
print "$checks checks, $failures failures"
((failures == 0 && checks > 15))
TEST
zsh -f "$folder/test.zsh" "$folder/kora4ctl.zsh"
