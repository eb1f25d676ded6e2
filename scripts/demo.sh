#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# demo.sh: installs what is missing, builds, registers the library in a Wine prefix of its own, and
# runs three programs on one store: one changes settings, one publishes levels as the audio engine
# does, and one is notified of the changes, reads the levels and shows both. Exits 0 only if every
# change and all levels arrive.
#
# demo.sh --panel: opens the panel next to the simulator instead, where a display is there, and ends
# when the panel is closed.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

panel=0
case "${1:-}" in
  '') ;;
  --panel) panel=1 ;;
  *) die "there is no '$1'; use --panel or nothing." ;;
esac
[ "$panel" = 0 ] || [ -n "${DISPLAY:-}" ] ||
  die "there is no display (DISPLAY is empty); run this in a desktop session, or scripts/screenshots.sh for pictures of the panel."
require "${build_needs[@]}" "${wine_needs[@]}"
build release all

bin=$root/build/release/bin
demo=$root/build/demo
prefix=$demo/wine
patience=10 # seconds within which a change must arrive

# Where the engine publishes its levels, from the tables of the document that the tests compare with
# the code: the cell of the row that begins with these cells.
cell() {
  sed -n "s/^| $1 | \`\(.*\)\` |\$/\1/p" "$root/docs/store-schema.md"
}
levels_key=$(cell 'static | 2')
levels_value=$(cell 'settings | | | 4')
[ -n "$levels_key" ] && [ -n "$levels_value" ] ||
  die "docs/store-schema.md does not say where the levels are stored."
pictures=24

say "preparing a Wine prefix in build/demo"
make_prefix "$prefix"
export WINEPREFIX=$prefix
trap 'exec 3>&- 4<&- 5>&- 6<&- 7>&- 8<&-; end_prefix "$prefix"' EXIT

# Forget what an earlier demo has stored.
"$wine64" reg delete "HKLM\\${levels_key%\\*}" /f >/dev/null 2>&1 || true
say "registering QXA64T.dll"
"$wine64" regsvr32 /s "Z:${bin//\//\\}\\QXA64T.dll" ||
  die "regsvr32 cannot register $bin/QXA64T.dll; build it again with scripts/build.sh."

if [ "$panel" = 1 ]; then
  give_windows "$prefix" || die "Wine cannot show windows here; is $DISPLAY a display of yours?"
  say "kora4sim publishes levels; change settings in the panel, and close it to end"
  "$wine64" "$bin/kora4sim.exe" --quiet &
  "$wine64" "$bin/KORA4Panel.exe"
  exit 0
fi

# talk PROGRAM [ARGUMENT...]: starts a program between two pipes, PROGRAM.in and PROGRAM.out.
talk() {
  local program=$1
  shift
  rm -f "$demo/$program.in" "$demo/$program.out"
  mkfifo "$demo/$program.in" "$demo/$program.out"
  timeout 300 "$wine64" "$bin/kora4_$program.exe" "$@" \
    <"$demo/$program.in" >"$demo/$program.out" &
}

# Columns: time of day, who, what.
line() { printf '%s  %-8s %s\n' "$1" "$2" "$3"; }
clock() { printf '%(%H:%M:%S)T.%03d' "$(($1 / 1000000))" "$(($1 / 1000 % 1000))"; }
milliseconds() { printf '%d.%d ms' "$(($1 / 1000))" "$(($1 / 100 % 10))"; }

# hear FD: reads one line of a program into when, kind, first, second, third.
hear() {
  local text
  IFS= read -r -t "$patience" -u "$1" text || return 1
  IFS='|' read -r when kind first second third <<<"${text%$'\r'}"
}
ready() {
  hear "$1" && [ "$kind" = ready ] ||
    die "the $2 did not start; run scripts/test.sh to see whether the library works here."
}

say "starting the three programs"
talk watcher
exec 3>"$demo/watcher.in" 4<"$demo/watcher.out"
ready 4 watcher
line "$(clock "$when")" watcher "process $first: registered its callback and waits"
talk changer
exec 5>"$demo/changer.in" 6<"$demo/changer.out"
ready 6 changer
line "$(clock "$when")" changer "process $first: will change settings now"
talk engine "$levels_key" "$levels_value"
exec 7>"$demo/engine.in" 8<"$demo/engine.out"
ready 8 engine
line "$(clock "$when")" engine "process $first: will publish levels after that"
echo

changes=0 missing=0 slowest=0 shown=0 latest=0

# notified SETTING VALUE WHEN: waits until the watcher has been notified of that change.
notified() {
  local when kind first second third took
  while hear 4; do
    took=$((when - $3))
    line "$(clock "$when")" watcher "    was notified: $first is $second ($(milliseconds "$took") after the change began)"
    if [ "$first" = "$1" ] && [ "$second" = "$2" ]; then
      [ "$took" -le "$slowest" ] || slowest=$took
      return 0
    fi
  done
  line "$(printf '%-12s' '')" watcher "    was NOT notified within $patience s: $1 is $2"
  missing=$((missing + 1))
}

# change COMMAND: makes the changer carry out a command and waits for the notifications. Their order
# is the library's: the enable first, then the profile.
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
    notified "$first" "$second" "$when"
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

# show NUMBER: makes the engine publish a picture of levels and waits until the watcher, which reads
# them every sampling period, shows it.
show() {
  local when kind first second third published levels took
  printf 'levels %s\n' "$1" >&7
  if hear 8 && [ "$kind" = published ] && [ "$first" = 0 ]; then
    published=$when levels=$second
    while hear 4; do
      [ "$kind" = levels ] && [ "$first" = "$levels" ] || continue
      took=$((when - published))
      [ "$took" -le "$latest" ] || latest=$took
      shown=$((shown + 1))
      line "$(clock "$when")" watcher "    shows levels [$second] ($(milliseconds "$took") after they were published)"
      return 0
    done
  fi
  line "$(printf '%-12s' '')" watcher "    did NOT show the engine's levels, picture $1, within $patience s"
  missing=$((missing + 1))
}

echo
say "$pictures pictures of levels: the bands from low to high, a full block is 0 dB, a blank -60 dB or less"
for picture in $(seq 1 "$pictures"); do
  show "$picture"
done

# The programs end when their input does.
exec 3>&- 5>&- 7>&-
for program in watcher changer engine; do
  wait -n || missing=$((missing + 1))
done
echo
if [ "$missing" = 0 ]; then
  say "$changes changes made in one process, $changes reported in another, the slowest after $(milliseconds "$slowest")"
  say "$pictures pictures of levels published by a third process, $shown shown, the latest after $(milliseconds "$latest")"
else
  die "not every change or picture arrived, or a program failed ($missing in all); the lines above say which."
fi
