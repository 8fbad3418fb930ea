#!/usr/bin/env bash
# Compares what a build's debug information says of the exported functions, variables, classes and records with the
# one description that holds for x86-64 and 64-bit Arm, with GCC's C++ library. Needs Debian's abigail-tools.
# usage: abi_test.sh LIBRARY HEADERS [--update]    --update makes the description from this build
set -euo pipefail
here=$(dirname "$0")
described=$here/abi.xml
found=$(mktemp --suffix=.xml)
trap 'rm "$found"' EXIT
abidw --no-architecture --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed --no-write-default-sizes \
  --no-parameter-names --exported-interfaces-only --headers-dir "$2" --suppressions "$here/abi.suppr" "$1" >"$found"
[[ ${3:-} != --update ]] || cp "$found" "$described"
abidiff --no-architecture "$described" "$found"
