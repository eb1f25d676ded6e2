#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# A pool of equal Wine prefixes. Each test needs the settings store of a machine for itself; with
# several prefixes, tests can run side by side.
#
#   wine-pool.sh start FOLDER COUNT          makes the prefixes and starts their servers
#   wine-pool.sh run FOLDER PROGRAM [ARG...] runs a program in a prefix that is free
#   wine-pool.sh end FOLDER                  ends every process of the prefixes
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
verb=$1
pool=$(realpath -m "$2")
shift 2

# A server that nobody ends exits by itself after this many seconds.
linger=300

# pinned PREFIX COMMAND...: runs it on one processor, the same for all programs of a prefix. They and
# their server take turns, and a wake-up on another processor costs many times as much.
pinned() {
  local number=${1##*/}
  shift
  on_processor "$(((number - 1) % $(nproc)))" "$@"
}

start() {
  local number
  make_prefix "$pool/1"
  if [ "$1" -gt 1 ] && [ ! -f "$pool/$1/.prepared" ]; then
    # Copying is faster than making, but the registry is written when the server ends.
    end_prefix "$pool/1"
  fi
  for number in $(seq 1 "$1"); do
    if [ ! -f "$pool/$number/.prepared" ]; then
      rm -rf "${pool:?}/$number" # what an interrupted copy has left
      cp -a --reflink=auto "$pool/1" "$pool/$number"
    fi
    export WINEPREFIX=$pool/$number
    pinned "$WINEPREFIX" "$wineserver" "-p$linger" 2>/dev/null || true
    # The first program of a prefix starts its services.
    pinned "$WINEPREFIX" "$wine64" cmd /c exit </dev/null >/dev/null 2>&1
  done
}

end() {
  local prefix
  for prefix in "$pool"/*/; do
    end_prefix "${prefix%/}"
  done
}

# run_in PREFIX PROGRAM...: a test that was killed leaves the file .busy, so the next one ends all
# processes of the prefix first.
run_in() {
  local prefix=$1 result=0
  shift
  if [ -f "$prefix/.busy" ]; then
    end_prefix "$prefix" 9>&-
    WINEPREFIX=$prefix pinned "$prefix" "$wineserver" "-p$linger" 2>/dev/null 9>&- || true
  fi
  touch "$prefix/.busy"
  # Programs of two prefixes may have the same process id; this tells them apart.
  export KORA4_TEST_PREFIX=${prefix##*/}
  # The output goes through files: a server that the program had to restart outlives it and would
  # keep a pipe open.
  WINEPREFIX=$prefix pinned "$prefix" "$wine64" "$@" \
    >"$prefix.out" 2>"$prefix.err" 9>&- || result=$?
  cat "$prefix.out"
  cat "$prefix.err" >&2
  rm -f "$prefix/.busy"
  exit "$result"
}

run() {
  local prefix
  [ -f "$pool/1/.prepared" ] || start 1
  while true; do
    for prefix in "$pool"/*/; do
      exec 9>"${prefix%/}.lock"
      if flock -n 9; then
        run_in "${prefix%/}" "$@"
      fi
    done
    # All are taken: wait for the last one tried.
    flock -w 5 9 && run_in "${prefix%/}" "$@"
  done
}

wine_settings
case $verb in
  start) start "$1" ;;
  run) run "$@" ;;
  end) end ;;
  *) die "there is no '$verb'; use start, run or end." ;;
esac
