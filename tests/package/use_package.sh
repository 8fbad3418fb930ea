#!/usr/bin/env bash
# A stranger's project builds against an installed package, once with CMake and once with pkg-config alone, and runs a
# frame; likewise the kernels from C, linked and loaded while running.
# usage: use_package.sh PREFIX CMAKE CC CXX TOOLCHAIN EMULATOR... (empty: none, and the programs run as they are)
set -euo pipefail
prefix=$1 cmake=$2 cc=$3 cxx=$4 toolchain=$5
shift 5
source=$(cd "$(dirname "$0")/consumer" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

echo "-- by CMake"
"$cmake" -S "$source" -B "$work/build" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_C_COMPILER="$cc" \
  -DCMAKE_CXX_COMPILER="$cxx" ${toolchain:+-DCMAKE_TOOLCHAIN_FILE="$toolchain"} -DCMAKE_FIND_ROOT_PATH="$prefix" \
  >"$work/configure.log"
"$cmake" --build "$work/build" >"$work/build.log" || { cat "$work/build.log"; exit 1; }
"$@" "$work/build/consumer"
"$@" "$work/build/kernels"

echo "-- by pkg-config"
export PKG_CONFIG_LIBDIR
PKG_CONFIG_LIBDIR=$(dirname "$(find "$prefix" -name morvale.pc)")
libdir=$(dirname "$PKG_CONFIG_LIBDIR")
flags=$(pkg-config --cflags --libs morvale morvale-standins)
# shellcheck disable=SC2086
"$cxx" -std=c++20 "$source/main.cpp" $flags -Wl,-rpath,"$libdir" -o "$work/consumer"
"$@" "$work/consumer"
# The kernels need no platform: C's own linker finds all of it.
flags=$(pkg-config --cflags --libs morvale-kernels)
strict=(-std=c11 -Wall -Wextra -Wpedantic -Werror)
# shellcheck disable=SC2086
"$cc" "${strict[@]}" "$source/kernels.c" $flags -Wl,-rpath,"$libdir" -o "$work/kernels"
"$@" "$work/kernels"

echo "-- loaded while running"
"$cc" "${strict[@]}" -I"$prefix/include" "$source/loads_kernels.c" -ldl -o "$work/loads_kernels"
"$@" "$work/loads_kernels" "$libdir/libmorvale_kernels.so"
