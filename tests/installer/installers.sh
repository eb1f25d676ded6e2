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

# contents MSI FOLDER: its tables as text and its files.
contents() {
  local table
  mkdir -p "$2/tables"
  while read -r table; do
    case $table in
      _SummaryInformation) ;; # holds when and as what it was made
      # Streams of a table go into files of the working folder.
      *) (cd "$2/tables" && msiinfo export "$1" "$table" >"$table.txt") ;;
    esac
  done < <(msiinfo tables "$1")
  msiextract -C "$2/files" "$1" >/dev/null
}

# Made elsewhere, at another time, by another user and from a copy.
again() {
  local file other="$work/else where/by another"
  rm -rf "$work/else where" "$work/msi"
  mkdir -p "$other"
  cp -r "$work/tree" "$other/tree"
  (umask 077 && TZ=Asia/Tokyo bash "$root/installer/make.sh" "$root" "$other/tree" "$version" "$other/out")
  for file in "kora4asl-$version-setup.exe" "kora4asl-$version.spdx.json"; do
    cmp "$work/out/$file" "$other/out/$file" || fail "the bytes differ"
  done
  contents "$work/out/kora4asl-$version-x64.msi" "$work/msi/one"
  contents "$other/out/kora4asl-$version-x64.msi" "$work/msi/other"
  diff -r "$work/msi/one" "$work/msi/other" || fail "the contents of the packages differ"
  diff -r "$work/tree" "$work/msi/one/files/Velto/KORA4" || fail "the package lacks a file"
}

# The program that signs is asked for each program and library before something is made of it, for the
# program that removes, and for both installers. Here it only writes down for what.
signing() {
  local signed=$work/signed.txt
  rm -f "$signed"
  printf '#!/bin/sh\nprintf "%%s\\n" "$1" >>"%s"\n' "$signed" >"$work/sign"
  chmod +x "$work/sign"
  KORA4_SIGN=$work/sign bash "$root/installer/make.sh" "$root" "$work/before" "$before" "$work/signed"
  cat "$signed"
  diff <(sed -E 's,.*/,,; s,^makensis.*,uninstaller,' "$signed") - <<END || fail "others were signed"
QXA64T.dll
kora4ctl.exe
uninstaller
kora4asl-$before-setup.exe
kora4asl-$before-x64.msi
END
}

# The bill of materials names each file with its sums, and nothing that is not there.
bill() {
  perl -MJSON::PP -MDigest::SHA -0777 -e '
    my ($tree) = @ARGV;
    my $bill = decode_json(<STDIN>);
    my (%ids, $files);
    $ids{$_->{SPDXID}}++ for $bill, @{$bill->{packages}}, @{$bill->{files}};
    my @twice = grep { $ids{$_} > 1 } keys %ids;
    for my $file (@{$bill->{files}}) {
      my $sum = Digest::SHA->new(256)->addfile("$tree/$file->{fileName}", "b")->hexdigest;
      $files += grep { $_->{algorithm} eq "SHA256" && $_->{checksumValue} eq $sum } @{$file->{checksums}};
    }
    my @open = grep { !$ids{$_->{spdxElementId}} || !$ids{$_->{relatedSpdxElement}} } @{$bill->{relationships}};
    my $there = my @there = split(/\0/, qx{find "$tree" -type f -print0});
    printf "%d files of %d, %d packages, %d relationships, open %d, twice %d\n", $files, $there,
      scalar @{$bill->{packages}}, scalar @{$bill->{relationships}}, scalar @open, scalar @twice;
    exit($files != $there || @open || @twice || $bill->{spdxVersion} ne "SPDX-2.3");
  ' "$work/tree" <"$work/out/kora4asl-$version.spdx.json" || fail "the bill is wrong"
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
