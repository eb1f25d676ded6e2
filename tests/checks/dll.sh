#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# dll.sh LIBRARY EXPORTS MAX_BYTES: checks the exports, imports and size of the built library, and
# that nothing in it can throw.
# EXPORTS is a file with one name per line. MAX_BYTES 0 allows any size.
set -euo pipefail
library=$1 exports=$2 max=$3
objdump=x86_64-w64-mingw32-objdump
findings=0
complain() {
  echo "$(basename "$library"): $*"
  findings=$((findings + 1))
}

[ -f "$library" ] || { echo "there is no $library"; exit 1; }
table=$($objdump -p "$library")

found=$(awk '/^\[Ordinal\/Name Pointer\] Table/ { on = 1; next }
             on && /^$/ { exit }
             on { print $NF }' <<<"$table" | sort)
wanted=$(sort "$exports")
[ "$found" = "$wanted" ] ||
  complain "exports" $found "instead of" $wanted

# What every 64-bit Windows has.
system=" advapi32.dll kernel32.dll msvcrt.dll ole32.dll oleaut32.dll propsys.dll rpcrt4.dll user32.dll "
imports=$(sed -n 's/^.*DLL Name: *//p' <<<"$table" | tr 'A-Z' 'a-z')
[ -n "$imports" ] || complain "has no import table"
for import in $imports; do
  [[ $system == *" $import "* ]] || complain "imports $import, which is not part of the system"
done

# What throws where there is no memory ends the host.
for function in RaiseException RtlUnwindEx; do
  if grep -qE "[[:space:]]$function\$" <<<"$table"; then
    complain "imports $function: something in it can throw"
  fi
done

bytes=$(stat -c %s "$library")
[ "$max" = 0 ] || [ "$bytes" -le "$max" ] || complain "has $bytes bytes; $max are allowed"
if [ "$max" != 0 ] && $objdump -h "$library" | grep -q '\.debug_'; then
  complain "carries debug information"
fi

echo "dll: $bytes bytes, imports: $(echo $imports), $findings findings"
[ "$findings" = 0 ]
