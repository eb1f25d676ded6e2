#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# comments.sh SDK-INCLUDES GENERATED IDL-FOLDER WORK: what the public headers declare has its
# comment attached where an IDE looks for it, in C and in C++, as clang reads them; the type
# library's tool refuses a definition with a declaration that nothing documents; and both find
# what is put into copies to be found.
set -euo pipefail
includes=$1 generated=$2 definitions=$3 work=$4
here=$(cd "$(dirname "$0")" && pwd)
failures=0
rm -rf "$work"
mkdir -p "$work"
triplet=x86_64-w64-mingw32
gcc_folder=$(dirname "$("$triplet-g++-posix" -print-libgcc-file-name)")
c=(clang-16 --target="$triplet" -std=c11 -fparse-all-comments)
cpp=(clang++-16 --target="$triplet" -std=c++17 -fparse-all-comments -nostdinc++
  -isystem "$gcc_folder/include/c++" -isystem "$gcc_folder/include/c++/$triplet")

report() {
  if [ "$2" = 0 ]; then
    echo "ok      $1"
  else
    echo "FAILED  $1"
    sed 's/^/        /' "$work/output"
    failures=$((failures + 1))
  fi
}

# What is compiled beforehand is not dumped: only what is ours remains.
platform='#include <windows.h>\n#include <objbase.h>\n#include <rpc.h>\n#include <rpcndr.h>\n#include <ole2.h>\n'
printf "$platform" >"$work/platform.h"
printf "$platform#include <wrl/client.h>\n" >"$work/platform.hpp"
"${c[@]}" -x c-header "$work/platform.h" -o "$work/platform.h.pch"
"${cpp[@]}" -x c++-header "$work/platform.hpp" -o "$work/platform.hpp.pch"
printf '#include "kora4api.h"\n#include "kora4_proxies.h"\n' >"$work/api.c"
cp "$work/api.c" "$work/api.cpp"
printf '#include "kora4.hpp"\n' >"$work/wrapper.cpp"

cannot='Cannot be created'
classes=("VeltoKORA4APIAnalogCoclass=$cannot" "VeltoKORA4APIHDMICoclass=$cannot"
  "CLSID_VeltoKORA4APIAnalogCoclass=$cannot" "CLSID_VeltoKORA4APIHDMICoclass=$cannot"
  "VeltoKORA4APITestCoclass=The class to create" "CLSID_VeltoKORA4APITestCoclass=The class to create")

# check SUBJECT INCLUDES GENERATED
check() {
  local dump=(-I "$2" -I "$3" -fsyntax-only -Xclang -ast-dump=json)
  case $1 in
    C) "${c[@]}" -include-pch "$work/platform.h.pch" "${dump[@]}" "$work/api.c" ;;
    C++) "${cpp[@]}" -include-pch "$work/platform.hpp.pch" "${dump[@]}" "$work/api.cpp" ;;
    kora4.hpp)
      "${cpp[@]}" -include-pch "$work/platform.hpp.pch" "${dump[@]}" \
        -Xclang -ast-dump-filter=kora4:: "$work/wrapper.cpp"
      ;;
  esac >"$work/ast.json"
  local says=("${classes[@]}")
  [ "$1" != kora4.hpp ] || says=()
  perl "$here/comments.pl" "$1" "${says[@]}" "$2" "$3" <"$work/ast.json"
}

for subject in C C++ kora4.hpp; do
  result=0
  check "$subject" "$includes" "$generated" >"$work/output" 2>&1 || result=1
  report "every declaration has its comment in $subject" "$result"
  tail -n 1 "$work/output"
done

# finds SUBJECT WORDS FILE SED: with FILE edited by SED, the check says WORDS.
finds() {
  rm -rf "$work/copy"
  mkdir -p "$work/copy"
  cp -r "$includes" "$work/copy/include"
  cp -r "$generated" "$work/copy/generated"
  sed -i "$4" "$work/copy/$3"
  local result=0
  if check "$1" "$work/copy/include" "$work/copy/generated" >"$work/output" 2>&1 ||
    ! grep -qF -- "$2" "$work/output"; then
    result=1
  fi
  report "$1: finds '$2'" "$result"
}

# without LINE: a sed script that drops the comment in front of the lines that match.
without() { printf '/\\/\\*\\*/{:a;/\\*\\//!{N;ba};N;/%s/s/.*\\n//}' "$1"; }

header=generated/veltokora4api.h
finds C 'IVeltoKORA4APIVtbl::GetActiveProfile has no comment' "$header" \
  "$(without 'STDMETHODCALLTYPE \*GetActiveProfile')"
finds C++ 'IVeltoKORA4API::GetActiveProfile has no comment' "$header" \
  "$(without 'virtual.*GetActiveProfile')"
finds C++ 'KORA4APITechnology::eGraphicEQ has no comment' "$header" "$(without 'eGraphicEQ = ')"
finds C 'GraphicEQData::m_gain has no comment' "$header" "$(without 'm_gain')"
finds C++ 'm_values has no comment' "$header" 's| /\*\*< .*||'
finds C++ 'IVeltoKORA4API has no comment' "$header" "$(without 'MIDL_INTERFACE')"
finds C 'CLSID_VeltoKORA4APIAnalogCoclass does not say: Cannot' "$header" \
  "$(without 'GUID CLSID_VeltoKORA4APIAnalogCoclass')"
finds C++ 'CLSID_VeltoKORA4APIHDMICoclass does not say: Cannot' "$header" 's/Cannot be created/No/'
finds C 'Kora4RevokeProxies has no comment' include/kora4_proxies.h \
  "/^\/\* Ends a registration/,/\*\//d"
finds kora4.hpp 'Api::GetActiveProfile has no comment' include/kora4.hpp \
  '/The number of the active profile/d'

# refuses WORDS SED: the definition edited by SED gives no header.
refuses() {
  local result=0
  sed "$2" "$definitions/veltokora4api.idl" >"$work/changed.idl"
  if perl "$definitions/annotate.pl" header "$work/changed.idl" "$generated/../raw/veltokora4api.h" \
    "$work/changed.h" >"$work/output" 2>&1 || ! grep -qF -- "$1" "$work/output"; then
    result=1
  fi
  report "annotate.pl refuses: $1" "$result"
}

refuses 'eGraphicEQ has no documentation block' '/Graphic equalizer: up to/d'
refuses 'GetVeltoEnable has no documentation block' '/: pVeltoEnable is null/d'
refuses 'no help string behind the block of GetVeltoEnable' '/Gets the master enable/d'
refuses 'a documentation block before' '$s/$/ \/** nothing *\//'

echo "$failures failures"
[ "$failures" = 0 ]
