#!/usr/bin/env bash
# The shared object defines exactly the listed names, and needs nothing but the C and C++ libraries and the four
# functions of the platform.
# usage: exports_test.sh LIBRARY LIST NM READELF MAY_READ_ENVIRONMENT
set -euo pipefail
library=$1 list=$2 nm=$3 readelf=$4 may_read_environment=$5
status=0

echo "-- defined names against $list"
diff "$list" <("$nm" -D --defined-only -C "$library" | cut -d' ' -f3- | LC_ALL=C sort -u) || status=1

echo "-- undefined names of no versioned library"
platform=$'CreateVexaSession\nDestroyVexaSession\n__android_log_print\n__system_property_get'
diff <(echo "$platform") <("$nm" -D --undefined-only "$library" | awk '$1 == "U" && $2 !~ /@/ {print $2}' |
  LC_ALL=C sort) || status=1

echo "-- undefined names that may stay so"
marks=$'ATrace_beginSection\nATrace_endSection'
diff <(echo "$marks") <("$nm" -D --undefined-only "$library" | awk '$1 == "w" && $2 !~ /@|^_/ {print $2}' |
  LC_ALL=C sort) || status=1

echo "-- needed libraries"
foreign=$("$readelf" -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' |
  grep -vE '^(libstdc\+\+|libm|libgcc_s|libc|ld-linux-[a-z0-9-]+)\.so' || true)
[ -z "$foreign" ] || { echo "needs $foreign"; status=1; }

if [[ $may_read_environment != ON ]]; then
  echo "-- no look at the environment"
  ! "$nm" -D --undefined-only "$library" | grep getenv || status=1
fi

soname=$("$readelf" -d "$library" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
[[ $soname =~ ^libmorvale_capture\.so\.[0-9]+$ ]] || { echo "SONAME $soname carries no major version"; status=1; }
exit $status
