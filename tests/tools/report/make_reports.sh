#!/usr/bin/env bash
# Makes the reports that the tests of the page look at, of two replays, a comparison and several recordings at once.
#   make_reports.sh PROGRAM FOLDER
set -euo pipefail
program=$1 folder=$2
rm -rf "$folder"
mkdir -p "$folder"
for camera in front back; do
  "$program" scene --out "$folder/$camera" --camera "$camera" --people 2 --frames 40 --motion walk >/dev/null
  "$program" replay --format none --report "$folder/report_$camera" "$folder/$camera"
done
"$program" scene --out "$folder/other" --people 2 --frames 38 --motion walk --light warm >/dev/null
"$program" diff --report "$folder/report_diff" "$folder/front" "$folder/other" >/dev/null || test $? = 1
"$program" replay --jobs 2 --format none --report "$folder/reports" "$folder/front" "$folder/back"
