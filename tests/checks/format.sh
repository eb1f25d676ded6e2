#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# format.sh ROOT: every C and C++ file looks as .clang-format wants it.
set -euo pipefail
cd "$1"
if [ -e .git ]; then
  mapfile -t files < <(git ls-files '*.h' '*.hpp' '*.c' '*.cpp' '*.inc' | while read -r f; do [ -f "$f" ] && echo "$f"; done)
else
  mapfile -t files < <(find . -name build -prune -o -name '*.[hc]' -print -o -name '*.[hc]pp' -print -o -name '*.inc' -print)
fi
[ "${#files[@]}" -gt 0 ] || { echo "format: no file to look at under $1"; exit 1; }
printf '%s\0' "${files[@]}" | xargs -0 -P 2 -n 20 clang-format-14 --dry-run -Werror --style=file ||
  { echo "format: run clang-format-14 -i on the files above"; exit 1; }
echo "format: ${#files[@]} files, 0 findings"
