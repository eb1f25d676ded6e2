# SPDX-License-Identifier: MIT
# Sourced by the other scripts: messages, packages, and Wine prefixes.
# shellcheck shell=bash

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# Windows programs must not find another prefix by accident.
unset WINEPREFIX

say() { printf '== %s\n' "$*"; }

# die SENTENCE: what is wrong and what to do about it.
die() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

# What is needed, as "what to look for|package": a file if it begins with a slash, otherwise a
# program.
build_needs=(
  "cmake|cmake"
  "ninja|ninja-build"
  "g++|g++"
  "x86_64-w64-mingw32-g++-posix|g++-mingw-w64-x86-64-posix"
  "x86_64-w64-mingw32-widl|mingw-w64-tools"
  "/usr/include/wine/wine/windows/oaidl.idl|libwine-dev"
  "/usr/lib/x86_64-linux-gnu/wine/x86_64-windows/stdole2.tlb|libwine"
  "/usr/src/googletest/CMakeLists.txt|googletest"
  "/usr/include/CLI/CLI.hpp|libcli11-dev"
  "/usr/include/nlohmann/json.hpp|nlohmann-json3-dev"
  "perl|perl"
)
package_needs=(
  "git|git"
  "zip|zip"
  "makensis|nsis"
  "msibuild|msitools"
  "wixl|wixl"
)
wine_needs=("/usr/lib/wine/wine64|wine64")
display_needs=(
  "Xvfb|xvfb"
  "xdotool|xdotool"
  "import|imagemagick"
)
clang_needs=(
  "clang++-16|clang-16"
  "ld.lld-16|lld-16"
)
fuzz_needs=(
  "${clang_needs[@]}"
  "/usr/lib/llvm-16/lib/clang/16/lib/linux/libclang_rt.fuzzer-x86_64.a|libclang-rt-16-dev"
)
analysis_needs=(
  "${clang_needs[@]}"
  "clang-tidy-16|clang-tidy-16"
  "cppcheck|cppcheck"
)
bench_needs=("/usr/include/benchmark/benchmark.h|libbenchmark-dev")
test_needs=(
  "${fuzz_needs[@]}"
  "${bench_needs[@]}"
  "${package_needs[@]}"
  "clang-format-14|clang-format-14"
  "cppcheck|cppcheck"
  "codespell|codespell"
  "pkg-config|pkgconf"
  "/usr/bin/rustc|rustc"
  "/usr/lib/rustlib/x86_64-pc-windows-gnu|libstd-rust-dev-windows"
  "mcs|mono-mcs"
  "fish|fish"
  "zsh|zsh"
  "${display_needs[@]}"
)

# missing_packages NEED...: the packages of the needs that are not met, one a line.
missing_packages() {
  local need
  for need in "$@"; do
    case $need in
      /*) [ -e "${need%|*}" ] || printf '%s\n' "${need#*|}" ;;
      *) command -v "${need%|*}" >/dev/null || printf '%s\n' "${need#*|}" ;;
    esac
  done | sort -u
}

# require NEED...: installs what is missing, or says in one sentence what to do.
require() {
  local packages log
  packages=$(missing_packages "$@" | tr '\n' ' ')
  packages=${packages% }
  [ -n "$packages" ] || return 0
  local install="apt-get install --no-install-recommends $packages"
  command -v apt-get >/dev/null ||
    die "these packages of Debian 12 are missing, and this system has no apt-get to install them: $packages."
  [ "$(id -u)" = 0 ] ||
    die "packages are missing; run this as root, or have root run: $install"
  say "installing missing packages: $packages"
  log=$(mktemp)
  if ! {
    apt-get update &&
      DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends \
        --option Dpkg::Use-Pty=0 -- $packages
  } >"$log" 2>&1; then
    sed 's/^/   /' "$log" | grep -E '^   (E|Err|W):?' | tail -n 3 >&2 || true
    rm -f "$log"
    die "packages could not be installed; check the network and the package sources, then run: apt-get update && $install"
  fi
  rm -f "$log"
  packages=$(missing_packages "$@" | tr '\n' ' ')
  [ -z "$packages" ] ||
    die "these packages are still incomplete after the installation; install them again by hand: $packages"
}

# build PRESET TARGET...: configures and builds; the folder is build/PRESET.
build() {
  local preset=$1
  shift
  local log=$root/build/$preset.log
  say "configuring '$preset'"
  mkdir -p "$root/build"
  (cd "$root" && cmake --preset "$preset" -Wno-dev) >"$log" 2>&1 || {
    cat "$log" >&2
    die "'$preset' cannot be configured; the messages above say why (if the compiler has changed, remove build/$preset and try again)."
  }
  say "building '$preset' in build/$preset"
  cmake --build "$root/build/$preset" --target "$@" ||
    die "'$preset' does not build; the compiler's messages are above."
}

wine64=$root/scripts/wine64.sh
wineserver=/usr/lib/wine/wineserver64

# Every Windows program of this project runs with these settings: no messages from Wine itself, no
# .NET and no browser engine, no entries in the desktop menus, and a locale that allows any file
# name.
wine_settings() {
  export LC_ALL=C.UTF-8
  export WINEDEBUG=${WINEDEBUG:--all}
  export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
}

# on_processor NUMBER COMMAND...: runs it on that processor only, if the system allows it.
on_processor() {
  local processor=$1
  shift
  if taskset -c "$processor" true 2>/dev/null; then
    taskset -c "$processor" "$@"
  else
    "$@"
  fi
}

# make_prefix FOLDER: makes a Wine prefix once.
make_prefix() {
  wine_settings
  mkdir -p "$(dirname "$1")"
  (
    flock 9
    [ -f "$1/.prepared" ] && exit 0
    rm -rf "$1"
    WINEPREFIX=$1 "$wine64" wineboot -i >/dev/null 2>&1 9>&- || exit 1
    # Windows need no display then.
    WINEPREFIX=$1 "$wine64" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f \
      >/dev/null 2>&1 9>&- || exit 1
    # The driver counts from the start of the desktop.
    end_prefix "$1" 9>&-
    touch "$1/.prepared"
  ) 9>"$1.lock" || die "no Wine prefix can be made in $1; is there enough space on the disk?"
}

# give_windows FOLDER [SIZE]: windows of that prefix need a display from now on, and are on it; with
# a size such as 2000x1400, on a desktop that is one window of that size.
give_windows() {
  local stamp=$1/.windows${2:+-$2} explorer='HKCU\Software\Wine\Explorer'
  local -x WINEPREFIX=$1
  [ -f "$stamp" ] && return 0
  "$wine64" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d x11 /f >/dev/null 2>&1 || return 1
  if [ -n "${2:-}" ]; then
    "$wine64" reg add "$explorer" /v Desktop /d kora4 /f >/dev/null 2>&1 || return 1
    "$wine64" reg add "$explorer\Desktops" /v kora4 /d "$2" /f >/dev/null 2>&1 || return 1
  fi
  # The driver counts from the start of the desktop.
  end_prefix "$1"
  touch "$stamp"
}

# end_prefix FOLDER: ends every process of that prefix, and its server.
end_prefix() {
  [ -d "$1" ] || return 0
  WINEPREFIX=$1 "$wineserver" -k >/dev/null 2>&1 || true
  WINEPREFIX=$1 timeout 20 "$wineserver" -w >/dev/null 2>&1 || true
}
