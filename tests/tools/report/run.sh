#!/usr/bin/env bash
# Makes reports with the program and tries them, and pages made byte by byte, in a real browser.
#   run.sh PROGRAM TEMPLATE NODE_MODULES
set -euo pipefail
program=$1
export MORVALE_REPORT_TEMPLATE=$2 MORVALE_NODE_MODULES=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for camera in front back; do
  "$program" scene --out "$work/$camera" --camera "$camera" --people 2 --frames 40 --motion walk >/dev/null
  "$program" replay --format none --report "$work/report_$camera" "$work/$camera"
done
"$program" scene --out "$work/other" --people 2 --frames 38 --motion walk --light warm >/dev/null
"$program" diff --report "$work/report_diff" "$work/front" "$work/other" >/dev/null || test $? = 1

"$program" replay --jobs 2 --format none --report "$work/reports" "$work/front" "$work/back"
export MORVALE_REPORT_INDEX=$work/reports/index.html

export MORVALE_REPORT_HTML=$work/report_front/report.html,$work/report_back/report.html,$work/report_diff/report.html
node --test "$(dirname "$0")"/*.test.mjs
