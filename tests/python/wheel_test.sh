#!/usr/bin/env bash
# A wheel of a build folder's package, unpacked somewhere else, is used: it needs no library of ours.
#   wheel_test.sh BUILD_FOLDER PYTHON
set -euo pipefail
build=$1 python=$2
root=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT
cd "$root/python"
MORVALE_BUILD=$build "$python" setup.py -q egg_info --egg-base "$work" build --build-base "$work/build" \
  bdist_wheel --bdist-dir "$work/bdist" --dist-dir "$work"
"$python" -m zipfile -e "$work"/morvale-*.whl "$work/installed"
cd "$work"
PYTHONPATH=$work/installed "$python" -c '
import numpy, morvale
assert morvale.__file__.startswith("'"$work"'/installed"), morvale.__file__
picture = morvale.kernels.nv21_to_rgb(numpy.full((3, 2), 128, numpy.uint8), 2, 2)
assert picture.shape == (2, 2, 3) and (picture == 128).all(), picture
for name in "kernels.pyi", "py.typed":
    assert (morvale.__path__[0] + "/" + name) and open(morvale.__path__[0] + "/" + name)
'
