#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# build.sh [release|debug|clang|native]: installs what is missing and builds one preset.
# The library of the default, release, is build/release/bin/QXA64T.dll.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

preset=${1:-release}
case $preset in
  release | debug)
    require "${build_needs[@]}"
    build "$preset" all
    dll=$root/build/$preset/bin/QXA64T.dll
    [ -f "$dll" ] || die "the build produced no $dll; see the messages above."
    say "done: build/$preset/bin/QXA64T.dll ($(stat -c %s "$dll") bytes)"
    ;;
  clang)
    require "${build_needs[@]}" "${clang_needs[@]}"
    build clang all
    say "done: clang has compiled the library and the tools and checked the locks"
    ;;
  native)
    require "${build_needs[@]}" "${test_needs[@]}"
    build native all tests/all
    say "done: the platform-free files and their tests are in build/native/bin"
    ;;
  *)
    die "there is no preset '$preset'; use release, debug, clang or native."
    ;;
esac
