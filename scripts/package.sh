#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# package.sh: installs what is missing, builds the library and the tools, and leaves in build/package
#   kora4asl-sdk-VERSION-win64.zip, .tar.gz   the SDK
#   kora4asl-VERSION-setup.exe, -x64.msi      the installers
#   kora4asl-VERSION.spdx.json                the bill of materials
#   SHA256SUMS                                the sums of all of them
#   kora4-selftest.zip                        the test programs, for a Windows machine
# From one commit they are the same, byte for byte, wherever and whenever they are made with the
# packages of Debian 12; of the MSI, only the contents are. KORA4_SIGN names a program that signs (installer/make.sh).
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
# Nothing of an older version.
rm -rf "$root/build/package"
say "packing in build/package"
cpack --config "$root/build/release/CPackConfig.cmake" -B "$root/build/package" \
  >"$root/build/package.log" 2>&1 || {
  cat "$root/build/package.log" >&2
  die "the SDK cannot be packed; the messages above say why."
}
cp "$root/build/release/selftest/kora4-selftest.zip" "$root/build/package/"
say "making the installers"
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$root/build/release/CMakeCache.txt")
cmake --install "$root/build/release" --prefix "$root/build/package/tree" >>"$root/build/package.log"
"$root/installer/make.sh" "$root" "$root/build/package/tree" "$version" "$root/build/package"
cd "$root/build/package"
rm -rf tree installer-work
sha256sum -- *.zip *.tar.gz *.exe *.msi *.spdx.json | tee SHA256SUMS
