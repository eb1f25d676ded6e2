#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# soak.sh [NAME...]: installs what is missing, builds, and runs the long runs with these names
# (default: all), one after the other. Prints the seed and the time of each; exits 0 only if
# all of them pass.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

# A long run: its name, the test program under Wine, and what the program is told; SEED is a new
# random number.
runs=(
  "model|model_test|200000 SEED"
  "overtaken|overtaken_test|200000 SEED"
  "killed-writers|process_kill_test|10000 1 SEED"
  "killed-loads|ctl_kill_test|1 SEED"
  "killed-loads-at-random|ctl_random_kill_test|10000 SEED"
  "stores|random_store_test|10000 SEED"
  "tool-stores|hostile_tools_test|10000 SEED"
  "bursts|process_burst_test|--times=100"
  "cycles|process_cycles_test|--times=20"
  "everything|process_everything_test|--times=720"
  "panel|panel_test|--gtest_filter=PanelSteady.* 3400 1800"
)

names() { printf '%s\n' "${runs[@]%%|*}" | paste -sd' '; }

chosen=("${runs[@]}")
if [ "$#" -gt 0 ]; then
  chosen=()
  for name in "$@"; do
    found=0
    for run in "${runs[@]}"; do
      [ "${run%%|*}" = "$name" ] || continue
      chosen+=("$run")
      found=1
    done
    [ "$found" = 1 ] || die "there is no long run '$name'; use: $(names)."
  done
fi

require "${build_needs[@]}" "${wine_needs[@]}" "${test_needs[@]}"
mapfile -t programs < <(printf '%s\n' "${chosen[@]}" | cut -d'|' -f2 | sort -u)
build release QXA64T "${programs[@]}"

pool=$root/build/soak
trap '"$root/scripts/wine-pool.sh" end "$pool" >/dev/null 2>&1' EXIT
failed=()
for run in "${chosen[@]}"; do
  IFS='|' read -r name program arguments <<<"${run/SEED/$SRANDOM}"
  say "$name: $program $arguments"
  start=$SECONDS
  case $program in
    panel_*) place=("$root/scripts/with-display.sh" "$root/build/soak-panel") ;;
    *) place=("$root/scripts/wine-pool.sh" run "$pool") ;;
  esac
  # shellcheck disable=SC2086 # the arguments are several words
  "${place[@]}" "$root/build/release/bin/$program.exe" $arguments ||
    failed+=("$name")
  say "$name: $((SECONDS - start)) s"
done
[ "${#failed[@]}" = 0 ] || die "these long runs failed: ${failed[*]}; what they printed is above."
say "all long runs passed"
