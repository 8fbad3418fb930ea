#!/usr/bin/env bash
# What neither decodes nor draws starts without OpenCV, whose libraries take longer to load than such a command to run,
# and what draws pictures without those that read videos.
# usage: startup_test.sh PROGRAM
set -euo pipefail
program=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$program" scene --out "$work/scene" --size 64x64 --frames 1 >/dev/null

status=0
# Runs a command, and complains where it loads a library of this name.
loads_no() {
  local library=$1
  shift
  LD_DEBUG=files LD_DEBUG_OUTPUT="$work/loaded" "$program" "$@" >"$work/said" 2>&1 || { cat "$work/said"; status=1; }
  if grep -l "$library" "$work"/loaded.* >/dev/null; then echo "morvale $* loads $library"; status=1; fi
  rm "$work"/loaded.*
}

for command in --version --help "inspect $work/scene" "diff $work/scene $work/scene" "score $work/scene" \
  "replay --format none $work/scene"; do
  # shellcheck disable=SC2086
  loads_no libopencv $command
done
export VEXA_ENGINE=recorded VEXA_BUNDLE=$work/scene
loads_no libopencv_videoio analyze --faces none --out "$work/out" "$work"/scene/frames/*.nv21
exit $status
