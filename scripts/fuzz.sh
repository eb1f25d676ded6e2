#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# fuzz.sh [SECONDS | --inputs COUNT] [HARNESS...]: installs what is missing, builds the fuzz
# harnesses and runs each of them (default: all) for so many seconds (default 60), or with so many
# inputs, two at a time, beginning with the inputs in tests/fuzz/corpus and those that earlier runs
# have left in build/fuzz/corpus. Prints how many inputs each has executed and its random seed;
# exits 1 at a finding and says where the input is.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

limit=-max_total_time=60
if [ "${1-}" = --inputs ]; then
  [[ ${2-} =~ ^[1-9][0-9]*$ ]] || die "--inputs takes a number of inputs."
  limit=-runs=$2
  shift 2
elif [[ ${1-} =~ ^[0-9] ]]; then
  [[ $1 =~ ^[0-9]+$ ]] || die "'$1' is no number of seconds."
  limit=-max_total_time=$1
  shift
fi
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
  # The default schedule of the fuzzer costs several times as much as the large readers.
  "$tree/bin/${name}_fuzz" "$limit" -max_len=512 -timeout=30 -entropic=0 \
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
export root tree limit
say "running ${#chosen[@]} harnesses, each with $limit"
printf '%s\n' "${chosen[@]}" | xargs -P 2 -I{} bash -c 'run {}' ||
  die "decoder and oracle differ, or a sanitizer has found a fault; see above."
say "no finding"
