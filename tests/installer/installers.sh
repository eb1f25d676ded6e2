#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# installers.sh VERB ROOT BUILD WORK [ARGUMENT]: one test of the installers. ROOT is the project,
# BUILD its build tree, WORK the folder of these tests.
set -euo pipefail
verb=$1 root=$2 build=$3 work=$4
shift 4
export LC_ALL=C.UTF-8 SOURCE_DATE_EPOCH=1700000000
version=7.2.7000.4 before=7.2.7000.3
source "$root/scripts/common.sh"
fail() {
  echo "FAILED: $*"
  exit 1
}

# The installers of this build, and those of a version before it: less, and one file more. Its
# library is this one with another version in its resources.
make() {
  rm -rf "$work"
  mkdir -p "$work/before/bin"
  cmake --install "$build" --prefix "$work/tree" >"$work/install.log"
  bash "$root/installer/make.sh" "$root" "$work/tree" "$version" "$work/out"
  cp "$work/tree/bin/kora4ctl.exe" "$work/before/bin"
  echo gone >"$work/before/bin/gone.txt"
  # As text, and in the two fixed fields of file and product.
  perl -MEncode -0777 -pe 'BEGIN { binmode $_ for *STDIN, *STDOUT; ($new, $old) = map { encode("UTF-16LE", $_) } splice(@ARGV, 0, 2) }
             s/\Q$new\E/$old/g == 2 && s/\x02\0\x07\0\K\x04(?=\0\x58\x1B)/\x03/g == 2 || die "no version\n"' \
    "$version" "$before" \
    "$work/tree/bin/QXA64T.dll" >"$work/before/bin/QXA64T.dll"
  bash "$root/installer/make.sh" "$root" "$work/before" "$before" "$work/out"
  ls -l "$work/out"
}

# run PROGRAM: a test program on these installers, as Windows 10 in a prefix of its own.
run() {
  local pool=$build/installer-pool program=$1
  shift
  "$root/scripts/wine-pool.sh" start "$pool" 1
  wine_settings
  [ -f "$pool/1/.ten" ] || {
    WINEPREFIX=$pool/1 "$wine64" winecfg -v win10
    touch "$pool/1/.ten"
  }
  mkdir -p "$work/run"
  cd "$work/run"
  KORA4_INSTALLERS="Z:${work//\//\\}\\out" "$root/scripts/wine-pool.sh" run "$pool" "$program" "$@"
}

"$verb" "$@"
