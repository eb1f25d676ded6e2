#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# bench.sh [OPTION...]: installs what is missing, builds, and measures what the library costs
# beside the bare platform calls that it needs. docs/performance.md says how to read it.
#
#   --smoke         a short run that shows that everything works; its figures mean nothing
#   --json [FILE]   writes all figures and verdicts to FILE or, without one, to standard output in
#                   place of the tables
#   --save          makes this run the baseline, bench/baseline.json
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

smoke=() json=() native=(--benchmark_repetitions=9 --benchmark_min_time=0.1) save=
while [ "$#" -gt 0 ]; do
  case $1 in
    --smoke)
      smoke=(--smoke)
      native=(--benchmark_repetitions=1 --benchmark_min_time=0.001)
      ;;
    --json)
      case ${2:--} in
        -*) json=(--json -) ;;
        *)
          json=(--json "$2")
          shift
          ;;
      esac
      ;;
    --save) save=1 ;;
    *) die "there is no '$1'; use --smoke, --json [FILE] or --save." ;;
  esac
  shift
done
[ -z "$save" ] || [ "${#smoke[@]}" = 0 ] || die "a short run cannot be the baseline; omit --smoke or --save."

work=$root/build/bench/work
prefix=$root/build/bench/wine
baseline=$root/bench/baseline.json
# The last processor, because most of the machine's own work runs on the first.
processor=$(($(nproc) - 1))

# Everything but the result goes to standard error.
{
  require "${build_needs[@]}" "${wine_needs[@]}" "${bench_needs[@]}"
  build bench bench
  build release bench
  say "preparing a Wine prefix in build/bench"
  mkdir -p "$work"
  make_prefix "$prefix"
  export WINEPREFIX=$prefix
  end_prefix "$prefix"
  trap 'end_prefix "$prefix"' EXIT
  # Server and clients share one processor: across two, the time of a call to the server would say
  # more about caches and wake-ups than about the call.
  on_processor "$processor" "$wineserver" -p60
  read -r load _ </proc/loadavg
  say "measuring; the load of the machine is $load"
  [ "${load%.*}" = 0 ] || say "other programs are running: 99th percentiles and long calls will be off"
  on_processor "$processor" "$root/build/bench/bin/kora4_bench_native" "${native[@]}" \
    --benchmark_out="$work/native.json" --benchmark_out_format=json >"$work/native.log" 2>&1 ||
    die "the native benchmarks fail; see build/bench/work/native.log."
  on_processor "$processor" "$wine64" "$root/build/release/bin/kora4_bench.exe" \
    "${smoke[@]}" --out "Z:$work/windows.json" ||
    die "the benchmarks under Wine fail; see above."
} >&2

compare=()
[ "${#smoke[@]}" != 0 ] || [ ! -f "$baseline" ] || compare=(--baseline "$baseline")
perl "$root/bench/report.pl" "${json[@]}" "${compare[@]}" "$work/windows.json" "$work/native.json"
if [ -n "$save" ]; then
  perl "$root/bench/report.pl" --json - "$work/windows.json" "$work/native.json" >"$baseline"
  say "this run is the baseline now: bench/baseline.json" >&2
fi
