#!/usr/bin/env bash
# Looks at libmorvale_capture.so as built for a device: what it exports and needs, how it is linked, how the processor is
# to guard it, and what loading it costs. Says every fault that it finds, then the sizes.
# usage: check_library.sh LIBRARY LIST_OF_EXPORTS NM READELF    (llvm-nm and llvm-readelf, or the GNU ones)
set -euo pipefail
library=$1 list=$2 nm=$3 readelf=$4
status=0

fault() {
  printf 'FAULT  %s\n' "$1"
  status=1
}

# holds PATTERN WHAT READELF_OPTION...: the output must have a line like it; lacks: it must not.
look() { "$readelf" "$@" "$library" 2>/dev/null; }
holds() { grep -qE -- "$1" <<<"$(look "${@:3}")" || fault "$2"; }
lacks() { ! grep -E -- "$1" <<<"$(look "${@:3}")" || fault "$2"; }

# Every C++ library has a namespace of its own inside std.
one_namespace() { sed -E 's/std::__[A-Za-z0-9_]+::/std::/g' | LC_ALL=C sort -u; }

echo "-- exports against $list"
diff <(one_namespace <"$list") <("$nm" -D --defined-only -C "$library" | cut -d' ' -f3- | one_namespace) ||
  fault "the exports differ"

echo "-- imports"
platform='CreateVexaSession|DestroyVexaSession|__android_log_print|__system_property_get'
c='exit|exp|fclose|fegetround|fesetround|fmod|fopen|fread|fseeko?|ftello?|fwrite|gettimeofday|lround|mem(chr|cmp|cpy|move|set)|printf|puts|rewind|round|str(len|tol)|__stack_chk_fail'
cxx='__cxa_.*|__gxx_personality_v0|_Unwind_.*|_Z(nw|na|dl|da).*|_ZSt.*|_ZN?K?St.*|_ZN[KVk]?St.*|_ZT[ISV].*'
imports=$("$nm" -D --undefined-only "$library" | awk '{sub(/@.*/, "", $2); print $1, $2}')
marks=$(awk '$1 == "w" || $1 == "W" || $1 == "v" {print $2}' <<<"$imports" | grep -v '^_' | LC_ALL=C sort | xargs) || true
[[ $marks == 'ATrace_beginSection ATrace_endSection' ]] || fault "weak imports are $marks"
foreign=$(awk '$1 == "U" {print $2}' <<<"$imports" | grep -vxE "$platform|$c|$cxx" | xargs) || true
[[ -z $foreign ]] || fault "needs $foreign"
streams=$(awk '{print $2}' <<<"$imports" | grep -E 'stream|locale|ios_base' | xargs) || true
[[ -z $streams ]] || fault "stream code: $streams"
libraries=$(look -d | sed -nE 's/.*NEEDED.*\[(.*)\]/\1/p' |
  grep -vxE 'lib(log|c|m|dl|c\+\+|c\+\+_shared|vexa_vndk)\.so' | xargs) || true
[[ -z $libraries ]] || fault "needs the libraries $libraries"

echo "-- linking"
holds 'SONAME.*\[libmorvale_capture\.so\]' 'the SONAME is not plain libmorvale_capture.so' -d
lacks 'TEXTREL' 'text relocations' -d
lacks 'RPATH|RUNPATH' 'a search path' -d
holds 'BIND_NOW|Flags:.*NOW|FLAGS.*NOW' 'symbols are not bound at the start' -d
holds 'GNU_RELRO' 'no read-only relocations' -lW
lacks ' RWE | WE ' 'a segment is writable and executable' -lW
[[ $(look -lW | awk '$1 == "LOAD" {print $NF}' | sort -u) == 0x4000 ]] ||
  fault 'segments are not aligned to 16 KiB'

echo "-- guards"
holds 'BTI.*PAC' 'the note does not promise BTI and PAC' -n
grep -q __stack_chk_fail <<<"$imports" || fault 'no stack is guarded'

echo "-- size, bytes"
look -SW | sed -E 's/^ *\[ *[0-9]+\] *//' |
  while read -r name _ _ _ size _; do
    [[ ! $name =~ ^\.(text|rodata|eh_frame|data\.rel\.ro|data|bss)$ ]] || printf '%-14s %d\n' "$name" "0x$size"
  done
printf '%-14s %d\n' file "$(stat -Lc %s "$library")"
echo "-- work at the start"
relocations=$(look -rW | grep -cE 'R_AARCH64_|R_X86_64_') || true
relative=$(look -rW | grep -c '_RELATIVE') || true
printf '%-14s %d\n' relocations "$relocations" 'of addresses' "$relative" 'of symbols' $((relocations - relative))
exit $status
