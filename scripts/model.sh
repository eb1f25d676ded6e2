#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# model.sh [CALLS [SEED]]: installs what is missing, builds, and makes that many random API calls
# (default 20000) from three objects in two processes, comparing each with a model of the API; then
# as many again, many of them from callbacks. Prints the seed; exits 0 only if nothing differs.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

for number in "$@"; do
  [[ $number =~ ^[0-9]+$ ]] || die "'$number' is not a number; use: model.sh [CALLS [SEED]]."
done
[ "${1:-1}" -gt 0 ] || die "at least one call must be made; use: model.sh [CALLS [SEED]]."
[ "$#" -le 2 ] || die "there are too many arguments; use: model.sh [CALLS [SEED]]."

require "${build_needs[@]}" "${wine_needs[@]}" "${test_needs[@]}"
build release QXA64T model_test overtaken_test

prefix=$root/build/model/wine
say "preparing a Wine prefix in build/model"
make_prefix "$prefix"
export WINEPREFIX=$prefix
trap 'end_prefix "$prefix"' EXIT
for test in model_test overtaken_test; do
  "$wine64" "$root/build/release/bin/$test.exe" "${1:-20000}" "${2:-$SRANDOM}" ||
    die "the library and the model differ, or $test could not run; see above."
done
