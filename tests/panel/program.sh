#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# program.sh PROGRAM [MAX_BYTES]: checks that the panel imports system libraries only, has a version
# and a manifest, uses the protections of the linker, and is no larger than that.
set -euo pipefail
program=$1 max=${2:-0}
findings=0
complain() {
  echo "$(basename "$program"): $*"
  findings=$((findings + 1))
}
table=$(x86_64-w64-mingw32-objdump -p "$program")
imports=$(sed -n 's/^.*DLL Name: *//p' <<<"$table" | tr 'A-Z' 'a-z')
system=" advapi32.dll comctl32.dll comdlg32.dll dwmapi.dll gdi32.dll kernel32.dll msvcrt.dll ole32.dll oleacc.dll oleaut32.dll shcore.dll shell32.dll user32.dll uxtheme.dll "
[ -n "$imports" ] || complain "has no import table"
for import in $imports; do
  [[ $system == *" $import "* ]] || complain "imports $import"
done
for protection in DYNAMIC_BASE NX_COMPAT HIGH_ENTROPY_VA; do
  grep -q "$protection" <<<"$table" || complain "lacks $protection"
done
grep -q 'Windows GUI' <<<"$table" || complain "is no program with windows"
for text in 'PerMonitorV2' 'Microsoft.Windows.Common-Controls'; do
  grep -qa "$text" "$program" || complain "its manifest does not say $text"
done
grep -qaP 'K\0O\0R\0A\0004\0P\0a\0n\0e\0l\0\.\0e\0x\0e' "$program" || complain "has no version"
bytes=$(stat -c %s "$program")
[ "$max" = 0 ] || [ "$bytes" -le "$max" ] || complain "has $bytes bytes; $max are allowed"
echo "panel: $bytes bytes, $findings findings"
[ "$findings" = 0 ]
