#!/usr/bin/env bash
# Installs the build into an empty folder and lets a stranger's project build against it, once with CMake and once with
# pkg-config alone, and run a frame. With the program come its manual page and completion scripts.
# usage: package_test.sh BUILD_DIR CMAKE CXX EMULATOR... (an empty emulator runs the programs as they are)
set -euo pipefail
build=$1 cmake=$2 cxx=$3
shift 3
source=$(cd "$(dirname "$0")/consumer" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

"$cmake" --install "$build" --prefix "$prefix" >"$work/install.log"
toolchain=$(sed -n 's/^CMAKE_TOOLCHAIN_FILE:[A-Z]*=//p' "$build/CMakeCache.txt")

if [[ -x $prefix/bin/morvale && -z $toolchain ]]; then
  echo "-- the program"
  "$prefix/bin/morvale" manual | cmp - "$prefix/share/man/man1/morvale.1"
  "$prefix/bin/morvale" completion bash | cmp - "$prefix/share/bash-completion/completions/morvale"
  "$prefix/bin/morvale" completion zsh | cmp - "$prefix/share/zsh/site-functions/_morvale"
fi

echo "-- by CMake"
"$cmake" -S "$source" -B "$work/build" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$cxx" \
  ${toolchain:+-DCMAKE_TOOLCHAIN_FILE="$toolchain"} -DCMAKE_FIND_ROOT_PATH="$prefix" >"$work/configure.log"
"$cmake" --build "$work/build" >"$work/build.log" || { cat "$work/build.log"; exit 1; }
"$@" "$work/build/consumer"

echo "-- by pkg-config"
export PKG_CONFIG_LIBDIR
PKG_CONFIG_LIBDIR=$(dirname "$(find "$prefix" -name morvale.pc)")
libdir=$(dirname "$PKG_CONFIG_LIBDIR")
# The stand-ins' own runtime is left out: this program brings one.
flags=$(pkg-config --define-prefix --cflags --libs morvale)
# shellcheck disable=SC2086
"$cxx" -std=c++20 "$source/main.cpp" $flags -L"$libdir" -lmorvale_host -Wl,-rpath,"$libdir" -o "$work/consumer"
"$@" "$work/consumer"
pkg-config --define-prefix --exists --print-errors morvale-standins
