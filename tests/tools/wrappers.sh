#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# wrappers.sh ROOT BIN WORK: scripts/kora4ctl and scripts/kora4sim run the built programs from any
# folder, with files named from there, and say what takes long the first time.
set -euo pipefail
root=$1 bin=$2 work=$3
failures=0
source "$root/scripts/common.sh"

# A project of its own: the prefix that a user has made stays as it is.
project="$work/the project"
end_prefix "$project/build/wine"
rm -rf "$work"
mkdir -p "$project/build/release" "$work/some folder" "$work/bin"
cp -r "$root/scripts" "$project/"
trap 'end_prefix "$project/build/wine"' EXIT

# expect RESULT WORDS COMMAND...: the exit code, and words among what it prints.
expect() {
  local wanted=$1 words=$2 result=0 printed
  shift 2
  printed=$("$@" 2>&1) || result=$?
  if [ "$result" = "$wanted" ] && grep -qF -- "$words" <<<"$printed"; then
    echo "ok      $(basename "$1") ${*:2}"
  else
    echo "FAILED  $*: exit code $result instead of $wanted, or no '$words' in: $printed"
    failures=$((failures + 1))
  fi
}

cd "$work/some folder"
expect 1 'kora4ctl.exe does not exist; scripts/build.sh builds it.' "$project/scripts/kora4ctl"
ln -s "$bin" "$project/build/release/bin"
making="== making a Wine prefix in $project/build/wine, once"
expect 0 "$making" "$project/scripts/kora4ctl" --version
ln -s "$project/scripts/kora4ctl" "$project/scripts/kora4sim" "$work/bin/"
PATH=$work/bin:$PATH
expect 0 'The library is registered.' kora4ctl register
if kora4ctl status 2>&1 | grep -qF "$making"; then
  echo 'FAILED  the second command makes a prefix too'
  failures=$((failures + 1))
fi
expect 0 'music' kora4sim --list
expect 5 'no-such-scene' kora4sim no-such-scene
expect 0 '"ready"' kora4sim --for 0 --json
expect 0 '' kora4ctl dump 'my settings.json'
expect 0 '' test -s 'my settings.json'
expect 0 '' kora4ctl diff 'my settings.json'
expect 0 '' kora4ctl load "$PWD/my settings.json"
expect 0 'kora4-settings' bash -c 'kora4ctl dump | cat'
[ "$failures" = 0 ]
