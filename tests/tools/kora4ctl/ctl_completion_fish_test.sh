#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# ctl_completion_fish_test.sh RUN...: what fish offers at each place of a command line of kora4ctl.
# RUN is the command that runs the program.
set -uo pipefail

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
export HOME=$folder XDG_CONFIG_HOME=$folder XDG_DATA_HOME=$folder
"$@" completion fish | tr -d '\r' >"$folder/kora4ctl.fish"
fish -n "$folder/kora4ctl.fish" || { echo "the script is no valid fish"; exit 1; }
# Completions are for programs that exist.
printf '#!/bin/sh\n' >"$folder/kora4ctl"
chmod +x "$folder/kora4ctl"
export PATH=$folder:$PATH
mkdir "$folder/files"
cd "$folder/files" || exit 1
touch one.json

# "WORDS|COMMAND LINE": just these are offered in place of its last word; "+" before: among others.
cases=(
  "profile|kora4ctl prof"
  "+status get profile completion help|kora4ctl "
  "off on show|kora4ctl trace "
  "+volume-leveler engine-mask|kora4ctl get "
  "+enable|kora4ctl get profile "
  "off on|kora4ctl set enable "
  "balanced bright focused off on open rich warm|kora4ctl set intelligent-eq "
  "+music demo-games|kora4ctl get --profile "
  "+volume-leveler|kora4ctl get --profile music vol"
  "games movie music p1 p2 p3 p4 p5 p6|kora4ctl profile use "
  "|kora4ctl profile delete p1 "
  "--follow|kora4ctl trace show --fo"
  "+--json --quiet --deep --wait|kora4ctl doctor --"
  "bash fish powershell zsh|kora4ctl completion "
  "one.json|kora4ctl load "
  "|kora4ctl status "
  "|kora4ctl nonsense "
)
for one in "${cases[@]}"; do
  printf 'echo ==\ncomplete -C %q\n' "${one#*|}"
done >"$folder/asked.fish"
mapfile -t answers < <(
  fish -c "source $folder/kora4ctl.fish; source $folder/asked.fish" 2>&1 |
    awk -F '\t' '/^==$/ { if (n++) print line; line = ""; next } { line = line " " $1 } END { print line }'
)

failures=0
for i in "${!cases[@]}"; do
  wanted=${cases[i]%%|*}
  got=$(printf '%s\n' ${answers[i]-} | sort | tr '\n' ' ' | sed 's/ $//')
  if [[ $wanted == +* ]]; then
    for word in ${wanted#+}; do
      [[ " $got " == *" $word "* ]] && continue
      echo "${cases[i]#*|}: '$word' is not among '$got'"
      failures=$((failures + 1))
    done
  elif [ "$got" != "$wanted" ]; then
    echo "${cases[i]#*|}: '$got' instead of '$wanted'"
    failures=$((failures + 1))
  fi
done
[ "${#answers[@]}" = "${#cases[@]}" ] || { echo "${#answers[@]} answers"; failures=$((failures + 1)); }
echo "${#cases[@]} checks, $failures failures"
[ "$failures" = 0 ]
