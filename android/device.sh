#!/usr/bin/env bash
# Checks, measures and records on a device, over adb.
set -euo pipefail

readonly DEVICE_FOLDER=/data/local/tmp/morvale

usage() {
  cat <<TEXT
android/device.sh [--build FOLDER] COMMAND

  check            pushes morvale_selfcheck and runs it: does the device compute what every build computes?
  bench [CORE]     pushes morvale_device_bench and runs it on one core (default: the fastest), with the core's clock
                   before and after
  record TO [PROGRAM ARGUMENT...]
                   pushes the recording shim, runs the program on the device with the shim loaded ahead of the
                   library, and pulls what it recorded into the folder TO. A program without a slash is pushed from
                   the build folder. Without a program: pulls what a service of yours has recorded meanwhile into
                   $DEVICE_FOLDER/recordings

  --build FOLDER   where the programs were built (default: build/android)
ADB names another adb; ANDROID_SERIAL chooses among several devices.
TEXT
}

fail() { printf 'device.sh: %s\n' "$*" >&2; exit 1; }

adb() { command "${ADB:-adb}" "$@"; }
on_device() { adb shell "$@"; }

connect() {
  command -v "${ADB:-adb}" >/dev/null || fail "there is no adb: install Debian's package adb, or name it in ADB"
  [[ $(adb get-state 2>/dev/null) == device ]] || fail "no device answers: see 'adb devices'"
  on_device "mkdir -p $DEVICE_FOLDER"
}

# Pushes programs and libraries by name, from wherever in the build they are.
push() {
  local name found
  for name in "$@"; do
    found=$(find "$build" -name "$name" \( -type f -o -type l \) -print -quit)
    [[ -n $found ]] || fail "$build holds no $name: build it first (docs/android.md)"
    adb push "$(realpath "$found")" "$DEVICE_FOLDER/$name" >/dev/null
    on_device "chmod 755 $DEVICE_FOLDER/$name"
  done
}

describe() {
  printf 'device: '
  on_device 'echo "$(getprop ro.product.model) $(getprop ro.build.version.release) $(uname -m)"' 2>/dev/null || true
}

check() {
  push morvale_selfcheck
  describe
  on_device "cd $DEVICE_FOLDER && ./morvale_selfcheck"
}

# The core whose highest clock is the highest of all.
fastest_core() {
  on_device 'for core in /sys/devices/system/cpu/cpu[0-9]*; do
    echo "$(cat $core/cpufreq/cpuinfo_max_freq 2>/dev/null || echo 0) ${core##*cpu}"
  done' | sort -n | tail -n 1 | cut -d' ' -f2
}

clock_of() {
  printf 'core %s, clock %s kHz of %s\n' "$1" \
    "$(on_device "cat /sys/devices/system/cpu/cpu$1/cpufreq/scaling_cur_freq 2>/dev/null || echo unknown")" \
    "$(on_device "cat /sys/devices/system/cpu/cpu$1/cpufreq/cpuinfo_max_freq 2>/dev/null || echo unknown")"
}

bench() {
  local core=${1:-$(fastest_core)}
  [[ $core =~ ^[0-9]+$ ]] || fail "'$core' is no core's number"
  push morvale_device_bench
  describe
  clock_of "$core"
  # taskset takes a mask in hexadecimal.
  on_device "cd $DEVICE_FOLDER && taskset $(printf %x $((1 << core))) ./morvale_device_bench"
  clock_of "$core"
}

record() {
  (($# >= 1)) || fail "record wants a folder for what it pulls"
  local to=$1 program arguments=''
  shift
  if (($#)); then
    program=$1
    shift
    push libvexa_record.so
    if [[ $program != */* ]]; then
      push "$program"
      program=./$program
    fi
    (($# == 0)) || arguments=$(printf ' %q' "$@")
    on_device "cd $DEVICE_FOLDER && rm -rf recordings && mkdir recordings &&
      VEXA_RECORD_DIR=$DEVICE_FOLDER/recordings LD_LIBRARY_PATH=$DEVICE_FOLDER LD_PRELOAD=$DEVICE_FOLDER/libvexa_record.so $program$arguments"
  fi
  [[ -n $(on_device "ls $DEVICE_FOLDER/recordings 2>/dev/null") ]] || fail "nothing was recorded"
  mkdir -p "$to"
  adb pull "$DEVICE_FOLDER/recordings/." "$to" >/dev/null
  printf 'recorded:\n'
  find "$to" -name session.json -printf '  %h\n' | sort
}

build=build/android
if [[ ${1:-} == --build ]]; then
  (($# >= 2)) || fail "--build wants a folder"
  build=$2
  shift 2
fi
case ${1:-help} in
  check | bench | record)
    connect
    "$@"
    ;;
  help | --help | -h) usage ;;
  *) usage >&2; fail "no such command: $1" ;;
esac
