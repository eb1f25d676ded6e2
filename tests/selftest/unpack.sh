#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# unpack.sh FOLDER COMMAND... ZIP: packs the kit twice with the command, whose last argument is the
# archive, requires the same bytes, and unpacks it in the folder.
set -euo pipefail
place=$1
shift
zip=${*: -1}
"$@"
first=$(sha256sum <"$zip")
"$@"
[ "$first" = "$(sha256sum <"$zip")" ] || { echo "packing again gives other bytes"; exit 1; }
rm -rf "$place"
mkdir -p "$place"
(cd "$place" && cmake -E tar xf "$zip")
