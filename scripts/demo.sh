#!/usr/bin/env bash
# demo.sh: installs what is missing, builds, registers the library in a Wine prefix of its
# own, and shows two programs at work: one changes settings, the other is told. Exits 0 only
# if every change arrived.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

require "${build_needs[@]}" "${wine_needs[@]}"
build release all

bin=$root/build/release/bin
demo=$root/build/demo
prefix=$demo/wine
patience=10 # seconds that a change may take to arrive

say "preparing a Wine prefix in build/demo"
make_prefix "$prefix"
export WINEPREFIX=$prefix
trap 'exec 3>&- 4<&- 5>&- 6<&-; end_prefix "$prefix"' EXIT

# What an earlier demo stored is forgotten.
"$wine64" reg delete 'HKLM\SOFTWARE\Velto\KORA4' /f >/dev/null 2>&1 || true
say "registering QXA64T.dll"
"$wine64" regsvr32 /s "Z:${bin//\//\\}\\QXA64T.dll" ||
  die "regsvr32 cannot register $bin/QXA64T.dll; build it anew with scripts/build.sh."

# talk PROGRAM: starts a program between two pipes, PROGRAM.in and PROGRAM.out.
talk() {
  rm -f "$demo/$1.in" "$demo/$1.out"
  mkfifo "$demo/$1.in" "$demo/$1.out"
  timeout 300 "$wine64" "$bin/kora4_$1.exe" <"$demo/$1.in" >"$demo/$1.out" &
}

# Columns: time of day, who, what.
line() { printf '%s  %-8s %s\n' "$1" "$2" "$3"; }
clock() { printf '%(%H:%M:%S)T.%03d' "$(($1 / 1000000))" "$(($1 / 1000 % 1000))"; }
milliseconds() { printf '%d.%d ms' "$(($1 / 1000))" "$(($1 / 100 % 10))"; }

# hear FD: takes one line of a program into when, kind, first, second, third.
hear() {
  local text
  IFS= read -r -t "$patience" -u "$1" text || return 1
  IFS='|' read -r when kind first second third <<<"${text%$'\r'}"
}
ready() {
  hear "$1" && [ "$kind" = ready ] ||
    die "the $2 did not start; run scripts/test.sh to see whether the library works here."
}

say "starting the two programs"
talk watcher
exec 3>"$demo/watcher.in" 4<"$demo/watcher.out"
ready 4 watcher
line "$(clock "$when")" watcher "process $first: registered its callback and waits"
talk changer
exec 5>"$demo/changer.in" 6<"$demo/changer.out"
ready 6 changer
line "$(clock "$when")" changer "process $first: will change settings now"
echo

changes=0 missing=0 slowest=0

# told SETTING VALUE WHEN: waits until the watcher has been told that.
told() {
  local when kind first second third took
  while hear 4; do
    took=$((when - $3))
    line "$(clock "$when")" watcher "    was told: $first is $second ($(milliseconds "$took") after the change began)"
    if [ "$first" = "$1" ] && [ "$second" = "$2" ]; then
      [ "$took" -le "$slowest" ] || slowest=$took
      return 0
    fi
  done
  line "$(printf '%-12s' '')" watcher "    was NOT told within $patience s: $1 is $2"
  missing=$((missing + 1))
}

# change COMMAND: has the changer do something and follows what becomes of it. The order in
# which the watcher is told is the library's: the enable first, then the profile.
change() {
  local when kind first second third result=none
  local -a awaited=()
  printf '%s\n' "$1" >&5
  while hear 6; do
    if [ "$kind" = result ]; then
      result=$first
      break
    fi
    line "$(clock "$when")" changer "$first: $second -> $third"
    changes=$((changes + 1))
    if [ "$first" = "audio processing" ]; then
      awaited=("$first|$third|$when" "${awaited[@]}")
    else
      awaited+=("$first|$third|$when")
    fi
  done
  if [ "$result" != 0x00000000 ] || [ "${#awaited[@]}" = 0 ]; then
    line "$(printf '%-12s' '')" changer "'$1' changed nothing (result $result)"
    missing=$((missing + 1))
  fi
  for item in "${awaited[@]}"; do
    IFS='|' read -r first second when <<<"$item"
    told "$first" "$second" "$when"
  done
}

change 'profile Music'
change 'switch dialog enhancer: on'
change 'value volume leveler: 7'
change 'value headphone virtualizer: 2.5'
change 'eq 3 2 1 0 -1 -2'
change 'enable off'
change 'enable on'
change 'demo Movie off'
change 'demo Games on'
change 'leave-demo'
change 'create P1 Late evening'
change 'rename P1 Early morning'
change 'profile P1'
change 'profile Games'
change 'delete P1'

# Without input the programs end by themselves.
exec 3>&- 5>&-
wait -n || missing=$((missing + 1))
wait -n || missing=$((missing + 1))
echo
if [ "$missing" = 0 ]; then
  say "$changes changes made in one process, $changes told in the other, the slowest after $(milliseconds "$slowest")"
else
  die "not every change arrived, or a program failed ($missing in all); the lines above say which."
fi
