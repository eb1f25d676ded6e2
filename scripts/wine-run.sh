#!/usr/bin/env bash
# wine-run.sh PREFIX PROGRAM [ARGUMENT...]: runs a Windows program in a Wine prefix of its
# own, which is made on first use. Touches no other prefix.
set -euo pipefail
prefix=$(realpath -m "$1")
shift
export WINEPREFIX=$prefix WINEDEBUG=${WINEDEBUG:--all} WINEDLLOVERRIDES="mscoree,mshtml="
wine=/usr/lib/wine/wine64
mkdir -p "$(dirname "$prefix")"
(
  flock 9
  if [ ! -f "$prefix/.ready" ]; then
    "$wine" wineboot -i >/dev/null 2>&1
    touch "$prefix/.ready"
  fi
) 9>"$prefix.lock"
exec "$wine" "$@"
