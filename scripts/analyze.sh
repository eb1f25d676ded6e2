#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# analyze.sh [FOLDER...]: installs what is missing, configures the preset `clang` and has
# clang-tidy (.clang-tidy says what it looks for) and cppcheck (tests/checks/cppcheck.txt says what
# it may report) look at the sources below these folders of the project (default: src tools
# panel sdk/include). Exits 1 at a finding.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

folders=("$@")
[ "${#folders[@]}" -gt 0 ] || folders=(src tools panel sdk/include)
cd "$root"
for folder in "${folders[@]}"; do
  [ -d "$folder" ] || die "there is no folder '$folder' in the project."
done

require "${build_needs[@]}" "${analysis_needs[@]}"
build clang idl/kora4_idl_files
mapfile -t files < <(find "${folders[@]}" -name '*.cpp' | sort)

say "cppcheck: ${folders[*]}"
bash tests/checks/cppcheck.sh . "${folders[@]}" ||
  die "cppcheck has found something; see above."

say "clang-tidy: ${#files[@]} sources in ${folders[*]}"
[ "${#files[@]}" = 0 ] || printf '%s\0' "${files[@]}" |
  xargs -0 -P "$(nproc)" -n 1 clang-tidy-16 -p build/clang --quiet 2>/dev/null ||
  die "clang-tidy has found something; see above."
say "no finding"
