#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# dll-selftest.sh ROOT WORK: dll.sh accepts a good library and finds each fault in a bad one.
set -euo pipefail
check=$1/tests/checks/dll.sh work=$2
failures=0
rm -rf "$work"
mkdir -p "$work"
cd "$work"
gcc=x86_64-w64-mingw32-gcc-posix

# expect RESULT WORDS ARGUMENT...
expect() {
  local wanted=$1 words=$2 result=0
  shift 2
  bash "$check" "$@" >output 2>&1 || result=1
  if [ "$result" = "$wanted" ] && grep -qF -- "$words" output; then
    echo "ok      $words"
  else
    echo "FAILED  $words: $(cat output)"
    failures=$((failures + 1))
  fi
}

echo '__declspec(dllexport) int Other(void) { return 1; }' >other.c
echo 'int Other(void); __declspec(dllexport) int One(void) { return Other(); }' >foreign.c
echo '__declspec(dllexport) int One(void) { return 1; }' >one.c
"$gcc" -shared -s -o other.dll other.c -Wl,--out-implib,libother.a
"$gcc" -shared -s -o foreign.dll foreign.c -L. -lother
"$gcc" -shared -s -o one.dll one.c
"$gcc" -shared -g -o symbols.dll one.c
echo '#include <windows.h>
__declspec(dllexport) void One(void) { RaiseException(1, 0, 0, 0); }' >throwing.c
"$gcc" -shared -s -o throwing.dll throwing.c
echo One >exports.txt

expect 0 '0 findings' one.dll exports.txt 100000
expect 1 'exports Other instead of One' other.dll exports.txt 100000
expect 1 'imports other.dll' foreign.dll exports.txt 100000
expect 1 'imports RaiseException' throwing.dll exports.txt 100000
expect 1 '1000 are allowed' one.dll exports.txt 1000
expect 1 'debug information' symbols.dll exports.txt 1000000
expect 0 '0 findings' symbols.dll exports.txt 0
expect 1 'there is no' none.dll exports.txt 0

echo "$failures failures"
[ "$failures" = 0 ]
