#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# bench-selftest.sh ROOT WORK: the report of the benchmark says met, missed and worse where
# that is so, and nowhere else.
set -euo pipefail
root=$1 work=$2
failures=0
rm -rf "$work"
mkdir -p "$work"

# figures FILE SLIDER OWN: a call of SLIDER us beside bare ones of 100 us, and OWN ns of own time.
figures() {
  cat >"$work/windows.json" <<END
{"rows": [
  {"group": "methods", "name": "GetVeltoEnable", "unit": "us", "samples": 9,
   "call": 100, "call99": 110, "bare": 100, "bare99": 110},
  {"group": "methods", "name": "GetSimplePatchValue", "unit": "us", "samples": 9,
   "call": $2, "call99": $2, "bare": 100, "bare99": 100},
  {"group": "methods", "name": "GetVeltoDemoAppCommand", "unit": "us", "samples": 9,
   "call": 0.2, "call99": 0.2, "bare": 0.1, "bare99": 0.1}]}
END
  cat >"$work/native.json" <<END
{"benchmarks": [{"name": "slider read", "cpu_time": $3}]}
END
  perl "$root/bench/report.pl" --json "$work/$1" "$work/windows.json" "$work/native.json" >/dev/null
}

# expect YES|NO WORDS [OPTION...]: what the report of the last figures says.
expect() {
  local wanted=$1 words=$2 found=NO
  shift 2
  perl "$root/bench/report.pl" "$@" "$work/windows.json" "$work/native.json" >"$work/out" 2>&1 ||
    true
  ! grep -qF -- "$words" "$work/out" || found=YES
  if [ "$found" = "$wanted" ]; then
    echo "ok      $wanted: $words"
  else
    echo "FAILED  $wanted: $words: $(cat "$work/out")"
    failures=$((failures + 1))
  fi
}

met='met           a method, times its bare calls, median: at most 1.03'
missed='missed        a method, times its bare calls, median: at most 1.03: 1.040 (GetSimplePatchValue)'
figures good.json 102 900
expect YES "$met"
expect NO 'missed '
expect NO '2.000 (GetVeltoDemoAppCommand)'
expect YES 'nothing is worse than' --baseline "$work/good.json"
expect YES 'not measured  platform calls while idle'
figures slightly.json 104 1001
expect YES "$missed"
expect YES 'missed        own processor time of a hot path, us: at most 1: 1.001 (slider read)'
expect NO 'methods: GetSimplePatchValue: ' --baseline "$work/good.json"
expect YES 'budget: a method, times its bare calls, median is missed and was met' \
  --baseline "$work/good.json"
figures bad.json 120 5000
expect YES 'methods: GetSimplePatchValue: 1.200, was 1.020' --baseline "$work/good.json"
expect YES 'own processor time: slider read: 5.000, was 0.900' --baseline "$work/good.json"
expect NO 'methods: GetVeltoEnable' --baseline "$work/good.json"
echo '{}' >"$work/windows.json"
cp "$work/windows.json" "$work/native.json"
expect YES 'there are no figures'

echo "$failures failures"
[ "$failures" = 0 ]
