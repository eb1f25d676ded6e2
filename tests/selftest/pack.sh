#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# pack.sh LIST STRIP ZIP: packs the files of the list (path|folder) in one folder, programs
# without their symbols and texts with the line ends of the platform, which batch files need. The
# same files give the same bytes. Fails if a program names a document that is not among them.
set -euo pipefail
list=$1 strip=$2 zip=$3
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
kit=$stage/kora4-selftest
export LC_ALL=C TZ=UTC
# strip writes it into the programs.
export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-1700000000}
while IFS='|' read -r file folder; do
  mkdir -p "$kit/$folder"
  case $file in
    *.exe) "$strip" -o "$kit/$folder/${file##*/}" "$file" ;;
    *.cmd | *.txt) sed 's/$/\r/' "$file" >"$kit/$folder/${file##*/}" ;;
    *) cp -r "$file" "$kit/$folder/" ;;
  esac
done <"$list"
grep -aohE 'docs/[a-z0-9/-]+\.md' "$kit"/*.exe | sort -u | while read -r document; do
  [ -e "$kit/$document" ] || { echo "pack.sh: a program reads $document, which is not packed" >&2; exit 1; }
done
chmod -R u=rwX,go=rX "$kit"
find "$kit" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +
rm -f "$zip"
cd "$stage"
find kora4-selftest -type f | sort | zip -q -4 -X -D -@ "$zip"
ls -l "$zip"
