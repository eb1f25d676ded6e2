#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# wine-run.sh PREFIX PROGRAM [ARGUMENT...]: runs a Windows program in a Wine prefix of its own, which
# it makes on first use. It touches no other prefix.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
prefix=$(realpath -m "$1")
shift
[ -f "$1" ] || die "$1 does not exist; scripts/build.sh builds it."
require "${wine_needs[@]}" >&2
[ -f "$prefix/.prepared" ] ||
  say "making a Wine prefix in $prefix, once; this takes about ten seconds" >&2
make_prefix "$prefix"
export WINEPREFIX=$prefix
exec "$wine64" "$@"
