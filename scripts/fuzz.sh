#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# fuzz.sh [SECONDS [HARNESS...]]: installs what is missing, builds the fuzz harnesses and runs each
# of them (default: all) for so many seconds (default 60), two at a time, beginning with the inputs
# in tests/fuzz/corpus and those that earlier runs have left in build/fuzz/corpus. Prints how many
# inputs each has executed and its random seed; exits 1 at a finding and says where the input is.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

seconds=${1:-60}
[[ $seconds =~ ^[0-9]+$ ]] || die "'$seconds' is no number of seconds."
shift $(($# > 0))
mapfile -t known < <(cd "$root/tests/fuzz" && printf '%s\n' *_fuzz.cpp | sed 's/_fuzz\.cpp$//')
chosen=("$@")
[ "${#chosen[@]}" -gt 0 ] || chosen=("${known[@]}")
for name in "${chosen[@]}"; do
  [[ " ${known[*]} " == *" $name "* ]] || die "there is no harness '$name'; use: ${known[*]}."
done

require "${build_needs[@]}" "${fuzz_needs[@]}"
build fuzz "${chosen[@]/%/_fuzz}"
tree=$root/build/fuzz
mkdir -p "$tree/findings" "$tree/logs"

# run NAME: one harness.
run() {
  local name=$1 log=$tree/logs/$1.log result=0
  mkdir -p "$tree/corpus/$name"
  "$tree/bin/${name}_fuzz" -max_total_time="$seconds" -max_len=512 -timeout=30 \
    -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$tree/findings/$name-" \
    "$tree/corpus/$name" "$root/tests/fuzz/corpus/$name" >"$log" 2>&1 || result=1
  printf '%-10s %12s inputs, seed %s\n' "$name" \
    "$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")" \
    "$(sed -n 's/^INFO: Seed: //p' "$log")"
  [ "$result" = 0 ] && return
  grep -aE -A2 'FINDING|ERROR: |runtime error' "$log" | head -n 12 || true
  printf '%-10s finding; the input is %s; all messages: %s\n' "$name" \
    "$(sed -n 's/.*Test unit written to //p' "$log")" "$log"
  return 1
}
export -f run
export root tree seconds
say "running ${#chosen[@]} harnesses, $seconds s each"
printf '%s\n' "${chosen[@]}" | xargs -P 2 -I{} bash -c 'run {}' ||
  die "decoder and oracle differ, or a sanitizer has found a fault; see above."
say "no finding"
