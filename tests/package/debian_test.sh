#!/usr/bin/env bash
# Looks whether apt would install the packages of a folder, unpacks them into an empty one and uses them there: strangers'
# projects, the program on a scene of its own, the check of the library's bits.
# usage: debian_test.sh FOLDER
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
debs=("$(cd "$1" && pwd)"/*.deb)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

echo "-- apt"
apt-get install --simulate -qq "${debs[@]}"
for deb in "${debs[@]}"; do dpkg-deb --extract "$deb" root; done
"$here/use_package.sh" "$work/root/usr" cmake cc c++ ""

echo "-- the program"
morvale() { root/usr/bin/morvale "$@"; }
morvale --version
morvale selfcheck
for camera in front back; do
  morvale scene --out "$camera" --camera "$camera" --size 320x240 --frames 5
  morvale replay --format records "$camera" >again
  cmp again "$camera/records.bin"
  VEXA_ENGINE=recorded VEXA_BUNDLE=$camera morvale analyze --camera "$camera" --faces none --out pictures \
    --format table "$camera"/frames/000000_*.nv21
done
ls pictures/*.png

[[ -d root/usr/lib/python3 ]] || exit 0
echo "-- Python"
PATH=$PWD/root/usr/bin:$PATH PYTHONPATH=$PWD/root/usr/lib/python3/dist-packages /usr/bin/python3 -B -c '
import morvale
replay = morvale.replay("front")
assert replay.records.tobytes() == open("front/records.bin", "rb").read()
print(len(replay.records), "records of the replay as recorded")'
