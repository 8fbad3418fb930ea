#!/usr/bin/env bash
# What neither decodes nor draws starts without OpenCV, whose libraries take longer to load than such a command to run.
# usage: startup_test.sh PROGRAM
set -euo pipefail
program=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$program" scene --out "$work/scene" --size 64x64 --frames 1 >/dev/null

status=0
for command in --version --help "inspect $work/scene" "diff $work/scene $work/scene" "score $work/scene" \
  "replay --format none $work/scene"; do
  # shellcheck disable=SC2086
  LD_DEBUG=files LD_DEBUG_OUTPUT="$work/loaded" "$program" $command >"$work/said" 2>&1 || { cat "$work/said"; status=1; }
  if grep -l opencv "$work"/loaded.* >/dev/null; then echo "morvale $command loads OpenCV"; status=1; fi
  rm "$work"/loaded.*
done
exit $status
