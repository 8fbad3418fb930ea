#!/usr/bin/env bash
# Installs the build into an empty folder and uses it there (use_package.sh). With the program come its manual page and
# completion scripts; the kernels can be installed without the rest.
# usage: package_test.sh BUILD_DIR CMAKE CC CXX EMULATOR... (an empty emulator runs the programs as they are)
set -euo pipefail
build=$1 cmake=$2 cc=$3 cxx=$4
shift 4
here=$(cd "$(dirname "$0")" && pwd)
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

"$here/use_package.sh" "$prefix" "$cmake" "$cc" "$cxx" "$toolchain" "$@"

echo "-- the kernels without the rest"
"$cmake" --install "$build" --component kernels --prefix "$work/kernels_alone" >>"$work/install.log"
export PKG_CONFIG_LIBDIR
PKG_CONFIG_LIBDIR=$(dirname "$(find "$work/kernels_alone" -name morvale-kernels.pc)")
flags=$(pkg-config --cflags --libs morvale-kernels)
# shellcheck disable=SC2086
"$cc" -std=c11 "$here/consumer/kernels.c" $flags -o "$work/kernels"
