#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# manuals.sh [DOCUMENT...]: builds the tools, runs every console transcript in the manuals and
# writes what the programs print now into the documents, and their pages for man into docs/man. Review the difference before you commit
# it: the tests only compare.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

require "${build_needs[@]}" "${wine_needs[@]}"
build release kora4ctl kora4sim kora4_first_client QXA64T manuals_test
[ "$#" -gt 0 ] || set -- README.md docs/kora4ctl.md docs/kora4sim.md

prefix=$root/build/manuals/wine
make_prefix "$prefix"
export WINEPREFIX=$prefix
trap 'end_prefix "$prefix"' EXIT
mkdir -p "$root/build/manuals/work"
cd "$root/build/manuals/work"
find . -mindepth 1 -delete
"$wine64" "$root/build/release/bin/manuals_test.exe" --update "$@"
