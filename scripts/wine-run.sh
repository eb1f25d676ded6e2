#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# wine-run.sh PREFIX PROGRAM [ARGUMENT...]: runs a Windows program in a Wine prefix of its
# own, which it makes on first use. It touches no other prefix.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
prefix=$(realpath -m "$1")
shift
make_prefix "$prefix"
export WINEPREFIX=$prefix
exec "$wine64" "$@"
