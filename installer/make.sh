#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# make.sh ROOT TREE VERSION OUT: makes the installers of TREE, which CMake has installed, and the bill of
# materials in the folder OUT, with the version VERSION. The same TREE gives the same setup and bill,
# byte for byte, and the same contents of the MSI: the time of everything in them is SOURCE_DATE_EPOCH.
#
# KORA4_SIGN names a program that signs: it is called with the name of each file that is to be signed,
# the programs and libraries of TREE first, the installers last. Without it, nothing is signed.
set -euo pipefail
root=$1 tree=$(realpath "$2") version=$3 out=$(realpath -m "$4")
: "${SOURCE_DATE_EPOCH:?set it to the time of the commit; scripts/package.sh does}"
export LC_ALL=C TZ=UTC
here=$root/installer
work=$out/installer-work
rm -rf "$work"
mkdir -p "$work"

sign() {
  [ -z "${KORA4_SIGN:-}" ] || "$KORA4_SIGN" "$1"
}

# The facts of the contract, from where they are written.
guid_of() {
  perl -0ne 'print "{", uc($1), "}" if /uuid\(([\w-]+)\)[^\]]*\]\s*coclass\s+'"$1"'\b/s' "$root/idl/veltokora4api.idl"
}
class=$(guid_of VeltoKORA4APITestCoclass)
store=$(sed -n 's/.*cBaseKeyPath\[\] = L"\(.*\)";/\1/p' "$root/src/contract/registry_paths.h" | sed 's/\\\\/\\/g')
[ -n "$class" ] && [ -n "$store" ] || { echo "make.sh: the contract is not where it was" >&2; exit 1; }
# Of this product, whatever its version.
upgrade_code='{7E718A11-10BE-4243-8720-317217868074}'

while IFS= read -r file; do
  sign "$file"
done < <(find "$tree" -name '*.exe' -o -name '*.dll' | sort)
find "$tree" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +

perl "$here/bill_of_materials.pl" "$tree" "$version" >"$out/kora4asl-$version.spdx.json"
perl "$here/lists.pl" "$tree" nsh >"$work/files.nsh"
setup=$out/kora4asl-$version-setup.exe
(cd "$here" && makensis -V2 -WX -NOCONFIG ${KORA4_SIGN:+"-DSIGN=$KORA4_SIGN"} "-DVERSION=$version" "-DTREE=$tree" "-DOUT=$setup" "-DLISTS=$work/files.nsh" \
  "-DSERVER_KEY=SOFTWARE\\Classes\\CLSID\\$class\\InprocServer32" "-DSTORE_KEY=$store" \
  "-DUPGRADE_CODE=$upgrade_code" kora4.nsi)
sign "$setup"

msi=$out/kora4asl-$version-x64.msi
perl "$here/lists.pl" "$tree" folders >"$work/files.wxi"
perl "$here/lists.pl" "$tree" features >"$work/features.wxi"
rm -f "$msi"
# Sources are relative to the working folder.
(cd "$tree" && wixl -a x64 -I "$work" -o "$msi" -D "Version=$version" -D "UpgradeCode=${upgrade_code//[\{\}]/}" \
  -D "ProductCode=$(perl "$here/lists.pl" "$tree" "product $version")" "$here/kora4.wxs")

# action NAME TYPE SEQUENCE CONDITION: a program in the package that runs at that place.
queries=()
action() {
  queries+=("UPDATE CustomAction SET Type = $2 WHERE Action = '$1'"
    "INSERT INTO InstallExecuteSequence (Action, Condition, Sequence) VALUES ('$1', '$4', $3)")
}
# A program in the package, by the service, as the system (2 + 1024 + 2048); and one that the
# service runs when a later step fails (256), whatever its result is (64).
run=3074 undo=3394
# Between InstallInitialize, RemoveFiles and InstallFiles.
action UndoUnregister $undo 1710 'Installed AND REMOVE="ALL"'
action Unregister $run 1720 'Installed AND REMOVE="ALL" AND (NOT REMOVESETTINGS OR UPGRADINGPRODUCTCODE)'
action UnregisterAll $run 1730 'Installed AND REMOVE="ALL" AND REMOVESETTINGS AND NOT UPGRADINGPRODUCTCODE'
action UndoRegister $undo 4010 'NOT Installed'
action Register $run 4020 'NOT REMOVE="ALL"'
# The library is the one file with a version in it. Windows Installer replaces such a file only by one
# of which the package says a version, and then asks for no hash.
queries+=("UPDATE File SET Version = '$version', Language = '1033' WHERE FileName = 'QXA64T.dll'"
  "DELETE FROM MsiFileHash WHERE File_ = '$(msiinfo export "$msi" File | awk -F'\t' '$3 == "QXA64T.dll" { print $1 }')'")
# The registered library, if it is of a later version: one of which only the fourth number is higher, which
# Windows Installer does not compare. A file (1), in the registry of 64-bit programs (16). Of the very version
# it is found in its own language only.
queries+=("INSERT INTO AppSearch (Property, Signature_) VALUES ('NEWERLIBRARY', 'NewerLibrary')"
  "INSERT INTO RegLocator (Signature_, Root, \`Key\`, Type) VALUES ('NewerLibrary', 2, 'SOFTWARE\\Classes\\CLSID\\$class\\InprocServer32', 17)"
  "INSERT INTO Signature (Signature, FileName, MinVersion, Languages) VALUES ('NewerLibrary', 'QXA64T.dll', '${version%.*}.$((${version##*.} + 1))', '1033')")
# The folder, as a value of this installation (51), after the folders are known.
queries+=("INSERT INTO CustomAction (Action, Type, Source, Target) VALUES ('SetLocation', 51, 'ARPINSTALLLOCATION', '[INSTALLDIR]')"
  "INSERT INTO InstallExecuteSequence (Action, Sequence) VALUES ('SetLocation', 1010)")
# What a client finds has to reach the service, which does not search again.
secure=$(printf '%s\n' NEWERVERSION OLDERVERSION NEWERLIBRARY REMOVESETTINGS \
  "$(msiinfo export "$msi" AppSearch | tail -n +4 | cut -f1)" | sort -u | paste -sd ';')
# Both ends of the range of versions belong to it (256 + 512), which the compiler does not write, and
# its features stay (1).
msibuild "$msi" -q "${queries[@]}" \
  "UPDATE InstallExecuteSequence SET Sequence = 1510, Condition = 'NOT REMOVE=\"ALL\"' WHERE Action = 'RemoveExistingProducts'" \
  "DELETE FROM Upgrade WHERE ActionProperty = 'OLDERVERSION'" \
  "INSERT INTO Upgrade (UpgradeCode, VersionMin, VersionMax, Attributes, ActionProperty)
   VALUES ('$upgrade_code', '0.0.0', '$version', 769, 'OLDERVERSION')" \
  "UPDATE Property SET Value = '$secure' WHERE Property = 'SecureCustomProperties'"
sign "$msi"
