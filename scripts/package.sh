#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# package.sh: installs what is missing, builds the library and the tools, and packs the SDK as
# build/package/kora4asl-sdk-VERSION-win64.zip and .tar.gz; then the test programs, packed as
# build/package/kora4-selftest.zip, which tests the library on a Windows machine. From one commit
# the archives are the same, byte for byte, wherever and whenever they are made with the packages
# of Debian 12.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

require "${build_needs[@]}" "${package_needs[@]}"
if [ -z "${SOURCE_DATE_EPOCH:-}" ]; then
  SOURCE_DATE_EPOCH=$(git -C "$root" log -1 --format=%ct 2>/dev/null) ||
    die "this folder is no clone, so the archive has no time; set SOURCE_DATE_EPOCH to seconds since 1970."
  [ -z "$(git -C "$root" status --porcelain)" ] ||
    say "note: there are changes that are not committed; this archive is of no commit"
fi
export SOURCE_DATE_EPOCH

build release all kora4_selftest_kit
say "packing in build/package"
cpack --config "$root/build/release/CPackConfig.cmake" -B "$root/build/package" \
  >"$root/build/package.log" 2>&1 || {
  cat "$root/build/package.log" >&2
  die "the SDK cannot be packed; the messages above say why."
}
cp "$root/build/release/selftest/kora4-selftest.zip" "$root/build/package/"
cd "$root/build/package"
sha256sum ./*.zip ./*.tar.gz
