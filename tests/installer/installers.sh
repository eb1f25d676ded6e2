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
  # Signed by a program that only writes down for what it is called.
  printf '#!/bin/sh\nprintf "%%s\\n" "$1" >>"%s"\n' "$work/signed.txt" >"$work/sign"
  chmod +x "$work/sign"
  KORA4_SIGN=$work/sign bash "$root/installer/make.sh" "$root" "$work/before" "$before" "$work/out"
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

# What the package says to Windows Installer, where that of Wine does not listen: nobody restarts the
# machine, an upgrade takes the features over (1), and what the conditions of the start ask for reaches the
# service, which does not search for it.
tables_say() {
  grep -q $'^REBOOT\tReallySuppress' "$1/Property.txt" || fail "an unattended upgrade could restart the machine"
  awk -F'\t' '$7 ~ /^OLDERVERSION/ { found = $5 % 2 } END { exit !found }' "$1/Upgrade.txt" ||
    fail "an upgrade would choose the features anew"
  local property secure
  secure=$(sed -n 's/^SecureCustomProperties\t\([^\r]*\).*/\1/p' "$1/Property.txt")
  for property in REMOVESETTINGS $(tail -n +4 "$1/AppSearch.txt" | cut -f1) $(tail -n +4 "$1/Upgrade.txt" | tr -d '\r' | cut -f7); do
    [[ ";$secure;" == *";$property;"* ]] || fail "the service does not get $property"
  done
  # Wine finds the library in any language.
  awk -F'\t' '{ sub(/\r$/, "") } $2 == "QXA64T.dll" { found = $9 == "1033" } END { exit !found }' "$1/Signature.txt" ||
    fail "the next version of the library would not be found"
  grep -qF "$(sed -n 's/^UpgradeCode\t\([^\r]*\).*/\1/p' "$1/Property.txt")" "$root/docs/deployment.md" ||
    fail "docs/deployment.md has another upgrade code"
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
  tables_say "$work/msi/one/tables"
  diff -r "$work/msi/one" "$work/msi/other" || fail "the contents of the packages differ"
  diff -r "$work/tree" "$work/msi/one/files/Velto/KORA4" || fail "the package lacks a file"
}

# The program that signs was asked for each program and library before something was made of it, for the
# program that removes, and for both installers.
signing() {
  cat "$work/signed.txt"
  diff <(sed -E 's,.*/,,; s,^makensis.*,uninstaller,' "$work/signed.txt") - <<END || fail "others were signed"
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

prefix=$build/installer-pool/1
folder="$prefix/drive_c/Program Files/Velto/KORA4"

# A prefix of its own, as Windows 10.
start() {
  "$root/scripts/wine-pool.sh" start "$build/installer-pool" 1
  wine_settings
  export WINEPREFIX=$prefix
  [ -f "$prefix/.ten" ] || {
    "$wine64" winecfg -v win10
    touch "$prefix/.ten"
  }
  mkdir -p "$work/run"
  cd "$work/run"
}

# run PROGRAM: a test program on these installers.
run() {
  start
  unset WINEPREFIX
  # The batch file that the document gives.
  sed -n '/^set TMP=/,/^```/{/^```/d; s/VERSION/'"$version"'/; s/$/\r/; p}' "$root/docs/deployment.md" >"$work/out/deploy.cmd"
  KORA4_INSTALLERS="Z:${work//\//\\}\\out" \
    "$root/scripts/wine-pool.sh" run "$build/installer-pool" "$@"
}

# The window on a display that nobody sees, by the keyboard alone; the pictures stay for a person to
# look at.
pictures=$work/pictures log=$work/window.log

picture() { import -window root "$1"; }

# Two pictures that differ at most by a blinking line.
is_same() { cmp -s "$1" "$2" || [ "$(compare -metric AE "$1" "$2" null: 2>&1)" -lt 60 ]; }

# press NAME KEY...: presses the keys and waits until the window shows something else, with more than the
# few colours of one that is not drawn yet, and stands still. With `says` set, the keys start work, and
# the log has that text before the last page comes.
press() {
  local name=$1 before=$work/before.ppm now=$work/now.ppm next=$work/next.ppm same=0
  shift
  picture "$before"
  cp "$before" "$now"
  [ $# = 0 ] || xdotool key --delay 100 "$@"
  [ -z "${says:-}" ] ||
    timeout 90 bash -c "until tr -d '\\0' <'$log' 2>/dev/null | grep -q '$says'; do sleep 0.1; done" ||
    fail "$name: the log does not say '$says'"
  for _ in $(seq 1 200); do
    sleep 0.2
    picture "$next"
    same=$((same + 1))
    is_same "$now" "$next" || same=0
    mv "$next" "$now"
    if [ "$same" -ge 2 ] && ! is_same "$before" "$now" && [ "$(identify -format %k "$now")" -gt 20 ]; then
      convert "$now" "$pictures/$name.png"
      return
    fi
  done
  fail "$name: the window does not change after '$*'"
}

# ends NUMBER CODE: the program of that number ends by itself, with that code.
ends() {
  local result=0
  timeout 60 bash -c "while kill -0 $1 2>/dev/null; do sleep 0.2; done" || fail "the program does not end"
  wait "$1" || result=$?
  [ "$result" = "$2" ] || fail "the exit code is $result, not $2"
}

# The setup with its window, and a log of its own.
run_setup() {
  rm -f "$log"
  exec "$wine64" "$work/out/kora4asl-$version-setup.exe" "/LOG=Z:${log//\//\\}" >/dev/null 2>&1
}

ctl() { "$wine64" "$folder/bin/kora4ctl.exe" "$@"; }

window() {
  local setup="$work/out/kora4asl-$version-setup.exe" display numbers=$work/display.txt
  start
  rm -rf "$pictures"
  # What a test before it may have left.
  "$wine64" "$setup" /UNINSTALL /REMOVESETTINGS || true
  "$wine64" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d x11 /f >/dev/null
  end_prefix "$prefix"
  mkdir -p "$pictures"
  : >"$numbers"
  Xvfb -displayfd 8 -screen 0 640x480x24 -nolisten tcp >/dev/null 2>&1 8>"$numbers" &
  display=$!
  # shellcheck disable=SC2064 # as they are now
  trap "'$wine64' reg add 'HKCU\\Software\\Wine\\Drivers' /v Graphics /d null /f >/dev/null 2>&1; end_prefix '$prefix'; kill $display || true" EXIT
  timeout 20 bash -c "until [ -s '$numbers' ]; do sleep 0.1; done" || fail "Xvfb does not start"
  DISPLAY=:$(tr -d '\n' <"$numbers")
  export DISPLAY

  run_setup &
  press install-welcome
  press install-features Return
  press install-folder Return
  says="is installed and registered" press install-finish Return
  xdotool key Return
  ends $! 0
  ctl register --check || fail "nothing is registered"
  ctl set profile games

  # Repair, with a library that is missing, while a program holds what is there.
  rm "$folder/bin/KORA4Proxies.dll"
  ctl watch >/dev/null 2>&1 &
  local watch=$!
  timeout 30 bash -c "until '$wine64' '$folder/bin/kora4ctl.exe' register --in-use 2>/dev/null | grep -q .; do sleep 0.2; done"
  run_setup &
  local repair=$!
  press repair-welcome
  press repair-features Return
  says="is installed and registered" press repair-finish Return
  xdotool key Return
  # 3010 in the eight bits that Unix has.
  ends $repair $((3010 % 256))
  [ -s "$folder/bin/KORA4Proxies.dll" ] || fail "KORA4Proxies.dll is still missing"
  kill "$watch"

  # Cancelled: asked, and nothing is changed.
  run_setup &
  local cancelled=$!
  press cancel-welcome
  press cancel-question Escape
  xdotool key y
  ends $cancelled $((1602 % 256))
  [ "$(ctl get profile | tr -d '\r')" = games ] || fail "the settings are not what they were"

  # Removal, with the settings: the second line of the list.
  rm "$log"
  "$wine64" "$folder/uninstall.exe" "/LOG=Z:${log//\//\\}" >/dev/null 2>&1
  press remove-features
  press remove-settings Down space
  says="is removed" press remove-finish Return
  xdotool key Return
  timeout 60 bash -c "while [ -e '$folder/bin' ]; do sleep 0.2; done" || fail "it is still there"
  "$wine64" reg query 'HKLM\SOFTWARE\Velto\KORA4' >/dev/null 2>&1 && fail "the settings are still there"
  ls "$pictures"
}

"$verb" "$@"
