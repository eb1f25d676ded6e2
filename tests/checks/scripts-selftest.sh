#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# scripts-selftest.sh ROOT WORK: on a machine that lacks something, the scripts say in one sentence
# what is wrong and what to do, and do not exit with success.
set -euo pipefail
root=$1 work=$2
failures=0
rm -rf "$work"
mkdir -p "$work/bin"

# fake NAME BODY: puts a program of that name first in the path.
fake() {
  printf '#!/bin/sh\n%s\n' "$2" >"$work/bin/$1"
  chmod +x "$work/bin/$1"
}

# expect RESULT WORDS COMMAND: sources common.sh and runs COMMAND, which must print one line on
# standard error if it fails and none if it succeeds.
expect() {
  local wanted=$1 words=$2 result=0 sentences
  PATH=$work/bin:$PATH bash -c "set -euo pipefail; source '$root/scripts/common.sh'; $3" \
    >"$work/out" 2>"$work/err" || result=1
  sentences=$(wc -l <"$work/err")
  if [ "$result" = "$wanted" ] && [ "$sentences" = "$wanted" ] &&
    cat "$work/out" "$work/err" | grep -qF -- "$words"; then
    echo "ok      $words"
  else
    echo "FAILED  $words: exit code $result, $(cat "$work/out" "$work/err")"
    failures=$((failures + 1))
  fi
}

lacking='require "/nowhere/at/all|strange-package"'
fake apt-get 'exit 0'
fake id 'echo 1000'
expect 1 'run this as root, or have root run: apt-get install --no-install-recommends strange-package' "$lacking"
fake id 'echo 0'
expect 1 'still incomplete after the installation; install them again by hand: strange-package' "$lacking"
fake apt-get 'echo "no network here"; exit 100'
expect 1 'check the network and the package sources, then run: apt-get update' "$lacking"
fake apt-get "touch '$work/brought'"
expect 0 'installing missing packages: strange-package' "require '$work/brought|strange-package'"
expect 0 'nothing to do' 'require "/|base" "sh|dash"; echo nothing to do'

# Without any package: only the shell and a few basic tools.
rm -f "$work/bin/"*
ln -s /bin/bash /bin/sh /usr/bin/dirname /usr/bin/basename /usr/bin/sort /usr/bin/tr "$work/bin/"
if PATH=$work/bin "$work/bin/bash" "$root/scripts/build.sh" release >"$work/out" 2>&1 ||
  [ "$(wc -l <"$work/out")" != 1 ] || ! grep -qF 'this system has no apt-get' "$work/out"; then
  echo "FAILED  build.sh on a system without packages: $(cat "$work/out")"
  failures=$((failures + 1))
else
  echo 'ok      build.sh on a system without packages'
fi

if "$root/scripts/build.sh" no-such-preset >"$work/out" 2>&1 ||
  ! grep -qF 'use release, debug, clang or native' "$work/out"; then
  echo "FAILED  build.sh no-such-preset: $(cat "$work/out")"
  failures=$((failures + 1))
else
  echo 'ok      build.sh names the presets'
fi

echo "$failures failures"
[ "$failures" = 0 ]
