#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# cppcheck.sh ROOT FOLDER...: cppcheck has nothing to report on the sources below these folders but
# what tests/checks/cppcheck.txt lists.
set -euo pipefail
reports=$(realpath "$(dirname "${BASH_SOURCE[0]}")")/cppcheck.txt
cd "$1"
shift
# Without the statements of the trace, whose macros it cannot read.
mapfile -t macros < <(sed -nE 's/^#define (KAL[A-Z_]+).*/-U\1/p' src/trace/trace.h)
cppcheck --quiet --error-exitcode=1 --enable=warning,performance,portability \
  --std=c++20 --language=c++ --library=windows --platform=win64 -D_WIN32 -DUNICODE "${macros[@]}" \
  -I src -I tools -I sdk/include \
  --suppress=missingInclude --suppress=missingIncludeSystem --suppress=unmatchedSuppression \
  --suppressions-list="$reports" "$@"
echo "cppcheck: 0 findings in $*"
