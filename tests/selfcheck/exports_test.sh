#!/usr/bin/env bash
# Every exported function is in the list of the check, which runs all listed kernels, but those that deal in files and
# in the time.
# usage: exports_test.sh LIST_OF_EXPORTS FOLDER_OF_CASES
set -euo pipefail
status=0
while read -r name; do
  grep -qw -- "$name" "$2"/{*_cases,camera}.cpp "$2"/../kernel_list/kernel_list.h || { echo "no case calls $name"; status=1; }
done < <(sed -nE 's/^(MorvaleCore::)?([A-Za-z0-9_]+)\(.*/\2/p' "$1" |
  grep -vxE 'MorvaleCore|dumpImage|loadInputData|currentTimeInMilliseconds')
exit $status
