#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# wine64.sh PROGRAM [ARGUMENT...]: Wine, in the prefix of WINEPREFIX and at fixed addresses.
#
# A page at 0x7FFE0000 belongs to every Windows process. wine64 lies below it, and Linux starts its
# heap anywhere within the next gigabyte: now and then on that page, and then the process does not
# start. That was one in two thousand, or its console was missing. With fixed addresses the heap
# follows the program. Processes that it starts are like it.
wine=(/usr/lib/wine/wine64)
# Some containers forbid it.
setarch -R true 2>/dev/null && wine=(setarch -R "${wine[@]}")
exec "${wine[@]}" "$@"
