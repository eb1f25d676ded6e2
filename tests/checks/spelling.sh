#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# spelling.sh ROOT: documents, comments and messages are spelt right, as far as a list of common
# mistakes can tell. The tests are left out, because they mistype on purpose, and what is German.
# spelling.txt beside this file holds what looks like a mistake and is none.
set -euo pipefail
root=$1
words=$(dirname "$0")/spelling.txt
cd "$root"
if [ -e .git ]; then list=(git ls-files -z); else list=(find . -type f -print0); fi
mapfile -d '' files < <("${list[@]}" | grep -zEv '^(\./)?tests/|/?LICENSE$|panel_german\.rc$')
[ "${#files[@]}" -gt 0 ] || { echo 'spelling: no files'; exit 1; }
existing=()
for file in "${files[@]}"; do [ ! -f "$file" ] || existing+=("$file"); done
result=0
codespell --ignore-words "$words" --quiet-level 2 "${existing[@]}" || result=1
echo "spelling: ${#existing[@]} files, findings: $([ "$result" = 0 ] && echo none || echo see above)"
exit "$result"
