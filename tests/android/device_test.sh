#!/usr/bin/env bash
# android/device.sh against a stand-in for adb.
# usage: device_test.sh SOURCE BUILD EMULATOR    (BUILD is for 64-bit Arm)
set -euo pipefail
source=$1 build=$2
export ADB=$source/tests/android/adb ADB_EMULATOR=$3 ADB_DEVICE
ADB_DEVICE=$(mktemp -d)
work=$(mktemp -d)
trap 'rm -r "$ADB_DEVICE" "$work"' EXIT
on_device=$ADB_DEVICE/data/local/tmp/morvale

mkdir -p "$ADB_DEVICE"/sys/devices/system/cpu/cpu{0,1}/cpufreq
echo 1800000 >"$ADB_DEVICE/sys/devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq"
echo 2400000 >"$ADB_DEVICE/sys/devices/system/cpu/cpu1/cpufreq/cpuinfo_max_freq"
echo 600000 >"$ADB_DEVICE/sys/devices/system/cpu/cpu1/cpufreq/scaling_cur_freq"
echo device >"$ADB_DEVICE/state"

run() { "$source/android/device.sh" --build "$build" "$@" >"$work/said" 2>&1; }
expect() { grep -qE -- "$1" "$work/said" || { echo "FAILED: no line like: $1"; cat "$work/said"; exit 1; }; }
refused() {
  local sentence=$1
  shift
  ! run "$@" || { echo "FAILED: $* passed"; exit 1; }
  expect "$sentence"
}

echo "-- check"
run check || { cat "$work/said"; exit 1; }
expect '^device: stand-in'
expect '^portable +passed'
expect '^neon +passed'

echo "-- bench, on the fastest core"
run bench || { cat "$work/said"; exit 1; }
expect '^core 1, clock 600000 kHz of 2400000'
expect '^microseconds +portable +neon'
expect '^front_frame +[0-9.]+ +[0-9.]+$'

echo "-- record"
for file in tests/record_camera workstation/runtime/libvexa_vndk.so workstation/host/libmorvale_host.so; do
  "$ADB" push "$build/$file" "/data/local/tmp/morvale/${file##*/}"
done
"$ADB" push "$build/src/libmorvale_capture.so" /data/local/tmp/morvale/libmorvale_capture.so.1
chmod +x "$on_device/record_camera"
VEXA_ENGINE=fixed run record "$work/pulled" ./record_camera film front "$on_device/results" ||
  { cat "$work/said"; exit 1; }
expect 'pulled/session-0001'
lines=$(wc -l <"$work/pulled/session-0001/metadata.jsonl")
[[ $lines == 15 ]] || { echo "FAILED: $lines frames, not 15"; cat "$work/said"; ls -R "$work/pulled"; exit 1; }
rm -r "$work/pulled"
run record "$work/pulled"
expect 'pulled/session-0001'

echo "-- what goes wrong is said in a sentence"
printf '#!/bin/sh\necho portable FAILED: NV21toRGB differs\nexit 1\n' >"$work/morvale_selfcheck"
build=$work refused 'FAILED: NV21toRGB differs' check
rm "$work/morvale_selfcheck"
build=$work refused "holds no morvale_selfcheck: build it first" check
refused "'fast' is no core's number" bench fast
refused 'wants a folder' record
refused 'no such command: chekc' chekc
rm -r "$on_device/recordings"
refused 'nothing was recorded' record "$work/pulled"
echo offline >"$ADB_DEVICE/state"
refused 'no device answers' check
ADB=$work/none refused 'there is no adb' check
