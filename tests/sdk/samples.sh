#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# samples.sh SDK GENERATED FOLDER: each sample that names the one line that builds it is built
# by that line, in a folder with a blank in its name that holds include/ and samples/ only.
set -euo pipefail
sdk=$1 generated=$2 folder="$3/a client"
rm -rf "$folder"
mkdir -p "$folder"
cp -r "$sdk/include" "$sdk/samples" "$folder"
cp "$generated"/*.h "$folder/include"
cd "$folder/samples"
built=0
for sample in *.c *.cpp; do
  line=$(sed -n 's/^\( \*\|\/\/\)   \(x86_64-w64-mingw32-g.*\)$/\2/p' "$sample" | sed 's/ \*\/$//')
  [ -n "$line" ] || continue
  result=$(sed 's/.* -o \([^ ]*\).*/\1/' <<<"$line")
  bash -c "$line -Wall -Wextra -Werror"
  [ -s "$result" ] || { echo "$sample: no $result"; exit 1; }
  built=$((built + 1))
done
echo "samples: $built built"
[ "$built" -ge 3 ]
