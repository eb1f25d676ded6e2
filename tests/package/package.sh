#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# package.sh VERB ROOT BUILD WORK [ARGUMENT]: one test of the packed SDK. ROOT is the project, BUILD
# its build tree, WORK the folder in which the tests unpack and build.
set -euo pipefail
verb=$1 root=$2 build=$3 work=$4
shift 4
export LC_ALL=C.UTF-8
triplet=x86_64-w64-mingw32

# Where a user may well unpack it.
place="$work/Töne & more/my SDK"
sdk() { printf '%s' "$place"/kora4asl-sdk-*; }
fail() {
  echo "FAILED: $*"
  exit 1
}

pack() {
  SOURCE_DATE_EPOCH=1700000000 cpack --config "$build/CPackConfig.cmake" -B "$1" >"$1.log" 2>&1 ||
    { cat "$1.log"; fail "cpack"; }
}

make() {
  rm -rf "$work"
  mkdir -p "$place"
  pack "$work/packed"
  tar -xzf "$work"/packed/*.tar.gz -C "$place"
  ls -l "$work"/packed/*.zip "$work"/packed/*.tar.gz
}

# Everything is there, equal in both archives, and nothing says where or when it was built.
contents() {
  local file folder findings=0
  cd "$(sdk)"
  for file in bin/QXA64T.dll bin/KORA4Proxies.dll bin/Velto.KORA4.manifest bin/kora4ctl.exe \
    bin/KORA4Panel.exe bin/kora4sim.exe bin/scenes/music.json include/kora4.hpp include/kora4/result.hpp \
    include/kora4api.h include/kora4api_codes.h include/kora4api_constants.h \
    include/kora4_proxies.h include/veltokora4api.h lib/libkora4_sdk_guids.a \
    lib/libkora4_sdk_proxies.a lib/src/veltokora4api_i.c lib/src/kora4_proxies.c \
    lib/cmake/VeltoKORA4/VeltoKORA4Config.cmake lib/pkgconfig/veltokora4.pc \
    idl/veltokora4api.idl tlb/veltokora4api.tlb csharp/kora4_interop.cs samples/CMakeLists.txt \
    samples/follow.cpp docs/getting-started.md docs/registration-free.md docs/api.md LICENSE; do
    [ -s "$file" ] || { echo "there is no $file"; findings=1; }
  done
  for file in "$root"/sdk/include/*.h* "$root"/sdk/include/kora4/*.hpp "$root"/sdk/samples/*; do
    [ -s "${file#"$root"/sdk/}" ] || { echo "there is no ${file#"$root"/sdk/}"; findings=1; }
  done
  for folder in "$root" "$build"; do
    grep -rlF -- "$folder" . && { echo "these files name $folder"; findings=1; }
  done
  for file in bin/*.dll bin/*.exe; do
    $triplet-objdump -p "$file" | grep -E '^Time/Date' | grep -qE ' 00:00:00 1970| not set|^Time/Date\s+0+ ' ||
      { $triplet-objdump -p "$file" | grep -E '^Time/Date'; echo "$file says when it was built"; findings=1; }
  done
  grep -qF 'version="'"$(sed -n 's/^set(PACKAGE_VERSION "\(.*\)")$/\1/p' \
    lib/cmake/VeltoKORA4/VeltoKORA4ConfigVersion.cmake)"'"' samples/registration_free.manifest ||
    { echo "samples/registration_free.manifest asks for another version"; findings=1; }
  mkdir -p "$work/zip"
  (cd "$work/zip" && cmake -E tar xf "$work"/packed/*.zip)
  diff -r "$place" "$work/zip" || { echo "the archives differ"; findings=1; }
  echo "$(find . -type f | wc -l) files, findings: $findings"
  [ "$findings" = 0 ]
}

# A link in a document leads to a file of the SDK.
links() {
  cd "$(sdk)"
  perl -e '
    my ($links, $dead) = (0, 0);
    for my $page (glob("docs/*.md")) {
      open(my $in, "<", $page) or die;
      while (<$in>) {
        while (/\]\(([^)#:]+)(#[^)]*)?\)/g) {
          $links++;
          next if -e "docs/$1";
          print "$page:$.: $1\n";
          $dead++;
        }
      }
    }
    print "$links links, $dead dead\n";
    exit($dead || !$links);'
}

# By another user, elsewhere and at another time, as far as one build can show.
again() {
  (umask 077 && TZ=Asia/Tokyo pack "$work/packed-again")
  for file in "$work"/packed/*.zip "$work"/packed/*.tar.gz; do
    cmp "$file" "$work/packed-again/$(basename "$file")" || fail "the bytes differ"
  done
  rm -rf "$work/packed-again"
}

samples_build="$(dirname "$place")/Gebäude"

build() {
  cmake -S "$(sdk)/samples" -B "$samples_build" -G Ninja \
    --toolchain "$(sdk)/lib/cmake/VeltoKORA4/mingw-w64-x86_64.cmake" \
    -DCMAKE_BUILD_TYPE=Release -DKORA4_RUSTC=/usr/bin/rustc
  cmake --build "$samples_build"
  local source name
  for name in first_client follow follow_raw follow_c follow_sta follow_mta two_apartments \
    registration_free slider_window publish_levels watcher changer engine follow_rs follow_cs; do
    [ -s "$samples_build/kora4_$name.exe" ] || fail "no kora4_$name.exe"
  done
}

samples() {
  # The library lies there because one of the samples wants it beside it.
  cp "$1" "$samples_build"
  cd "$samples_build"
  "$root/scripts/wine-pool.sh" run "$build/wine-pool" "$samples_build/$(basename "$1")"
}

# Each sample names the one line that builds it.
lines() {
  local sample line result built=0
  local copy
  copy="$(dirname "$place")/by lines"
  rm -rf "$copy"
  cp -r "$(sdk)" "$copy"
  cd "$copy/samples"
  for sample in *.c *.cpp *.rs *.cs; do
    line=$(sed -nE 's,^( \*|//)   ((x86_64-w64-mingw32-|rustc |mcs ).*)$,\2,p' "$sample")
    [ -n "$line" ] || { [ "$sample" = sample_client.cpp ] || fail "$sample has no line"; continue; }
    result=$(sed -E 's/.* -o(ut:| )(\S*\.exe).*/\2/' <<<"$line")
    # Another Rust may be first in the path.
    (export PATH="/usr/bin:$PATH" && bash -euc "$line") || fail "$sample: $line"
    [ -s "$result" ] || fail "$sample: no $result"
    built=$((built + 1))
  done
  echo "$built samples built"
  [ "$built" -ge 15 ]
}

# make_client FOLDER OPTION...: builds client.exe with CMake.
make_client() {
  local folder=$1
  shift
  rm -rf "$folder"
  mkdir -p "$folder"
  cp "$root/tests/package/client.cmake.in" "$folder/CMakeLists.txt"
  cp "$root/sdk/samples/two_apartments.cpp" "$folder"
  cmake -S "$folder" -B "$folder/build" -G Ninja -Wno-dev \
    --toolchain "$root/cmake/mingw-w64-x86_64.cmake" "$@" >"$folder/log" 2>&1 ||
    { cat "$folder/log"; exit 1; }
  cmake --build "$folder/build" --target client
  [ -s "$folder/build/client.exe" ] || fail "no client.exe"
}

# For compilers that do not read the libraries: the sources, with nothing but the headers.
sources() {
  local source
  make_client "$work/sources client" -DCMAKE_PREFIX_PATH="$(sdk)"
  for source in "$(sdk)"/lib/src/*.c; do
    clang-16 --target=$triplet -std=c11 -c -I "$(sdk)/include" "$source" -o "$work/source.o" ||
      fail "clang-16: $source"
  done
}

# block LANGUAGE PAGE: the first block of code of that language.
block() { sed -n "/^\`\`\`$1\$/,/^\`\`\`\$/p" "$2" | sed '1d;/^```$/,$d'; }

# What the guide for beginners says, with its own words.
guide() {
  local folder="$work/panel" page
  page="$(sdk)/docs/getting-started.md"
  rm -rf "$folder"
  mkdir -p "$folder"
  block cpp "$page" >"$folder/panel.cpp"
  block cmake "$page" >"$folder/CMakeLists.txt"
  cmake -S "$folder" -B "$folder/build" -DCMAKE_PREFIX_PATH="$(sdk)" \
    --toolchain "$(sdk)/lib/cmake/VeltoKORA4/mingw-w64-x86_64.cmake"
  cmake --build "$folder/build"
  [ -s "$folder/build/panel.exe" ] || fail "no panel.exe"
  grep -qxF "$(sed -n 's,^//   \(x86_64.*\),\1,p' "$(sdk)/samples/follow.cpp")" "$page" ||
    fail "the guide builds follow.cpp with another line"
}

pkg_config() {
  local flags
  flags=$(PKG_CONFIG_PATH="$(sdk)/lib/pkgconfig" pkg-config --cflags --libs veltokora4)
  echo "$flags"
  eval "$triplet-g++-posix -std=c++17 -static '$(sdk)/samples/two_apartments.cpp' -o '$work/two_apartments.exe' $flags"
}

# The C# declarations, compiled, have the shape of the C header.
interop() {
  mcs -out:"$work/interop_check.exe" "$root/tests/package/interop_check.cs" "$(sdk)/csharp/kora4_interop.cs"
  mono "$work/interop_check.exe" | tr -d '\r' >"$work/interop.txt"
  perl -0ne '
    while (/MIDL_INTERFACE\("([\w-]+)"\)\s*(\w+) : public IUnknown\s*\{(.*?)\n\};/gs) {
      my ($guid, $name, $body) = ($1, $2, $3);
      print "$name $guid\n";
      while ($body =~ /virtual HRESULT STDMETHODCALLTYPE (\w+)\(\s*(.*?)\) = 0/gs) {
        my ($method, $list) = ($1, $2);
        my $count = $list =~ /\S/ ? 1 + ($list =~ tr{,}{}) : 0;
        print "  $method $count\n";
      }
    }' "$(sdk)/include/veltokora4api.h" >"$work/header.txt"
  [ "$(grep -c '^  ' "$work/header.txt")" = 36 ] || fail "the header is not understood"
  printf 'KORA4PatchValueUnion 8\nGraphicEQData 324 164\n' >>"$work/header.txt"
  diff "$work/header.txt" "$work/interop.txt"
}

# The project as a part of another one, which builds what it needs of it.
fetch_content() {
  make_client "$work-fetch" -DKORA4_SOURCES="$root"
  ! cmake --build "$work-fetch/build" --target help | grep -q _test: || fail "the tests came, too"
}

"$verb" "$@"
