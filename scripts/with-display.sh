#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# with-display.sh PREFIX PROGRAM [ARGUMENT...]: runs a Windows program on a display that nobody sees,
# in a Wine prefix of its own, whose desktop is one window of the size of that display.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
prefix=$(realpath -m "$1")
shift
[ -f "$1" ] || die "$1 does not exist; scripts/build.sh builds it."
require "${wine_needs[@]}" "${display_needs[@]}" >&2
make_prefix "$prefix"
export WINEPREFIX=$prefix
size=2000x1400

# A prefix runs one such program at a time.
exec 9>"$prefix.display"
flock 9
end_prefix "$prefix" 9>&-

numbers=$(mktemp)
Xvfb -displayfd 8 -screen 0 "${size}x24" -nolisten tcp >/dev/null 2>&1 8>"$numbers" 9>&- &
display=$!
finish() {
  end_prefix "$prefix" 9>&-
  kill "$display" 2>/dev/null || true
  rm -f "$numbers"
}
trap finish EXIT
for _ in $(seq 1 100); do
  [ -s "$numbers" ] && break
  sleep 0.1
done
[ -s "$numbers" ] || die "Xvfb does not start; run it by hand to see why."
DISPLAY=:$(tr -d '\n' <"$numbers")
export DISPLAY

give_windows "$prefix" "$size" 9>&-
# A desktop that is there before its first window.
"$wine64" cmd /c exit >/dev/null 2>&1 9>&- </dev/null
"$wine64" "$@" 9>&-
