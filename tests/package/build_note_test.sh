#!/usr/bin/env bash
# The library tells which sources it was built from, in a note that readelf finds and a stripped copy keeps.
# usage: build_note_test.sh LIBRARY READELF STRIP SOURCE CMAKE
set -euo pipefail
library=$1 readelf=$2 strip=$3 source=$4 cmake=$5
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT
fail() { echo "$*" >&2; exit 1; }

"$strip" -o "$work/stripped.so" "$library"
for file in "$library" "$work/stripped.so"; do
  "$readelf" -nW "$file" | grep -q '^  Morvale ' || fail "$file has no note of ours"
done
told=$(strings -a "$library" | grep -E '^[0-9.]+, commit [^,]+, (GCC|clang) .*, kernels portable') ||
  fail "the note does not read as it should"
commit=$(sed 's/.*commit \([^,-]*\).*/\1/' <<<"$told")
[[ $commit == unknown ]] || git -C "$source" cat-file -e "$commit" || fail "commit $commit is none of the sources'"

echo "-- sources without git, and a file that stays as it is"
mkdir "$work/source"
make_file() { "$cmake" -DSOURCE="$work/source" -DVERSION=1.2.3 -DOUT="$work/commit.inc" -P "$source/cmake/build_commit.cmake"; }
make_file
grep -q 'COMMIT "unknown"' "$work/commit.inc" && grep -q 'VERSION "1.2.3"' "$work/commit.inc" || fail "$(cat "$work/commit.inc")"
touch -d @1 "$work/commit.inc"
make_file
[[ $(stat -c %Y "$work/commit.inc") == 1 ]] || fail "written anew without need"
if command -v git >/dev/null; then
  git -C "$work/source" init -q && echo a >"$work/source/file" && git -C "$work/source" add file &&
    git -C "$work/source" -c user.name=a -c user.email=a@b commit -qm a
  make_file
  grep -qE 'COMMIT "[0-9a-f]{12}"' "$work/commit.inc" || fail "$(cat "$work/commit.inc")"
  echo b >"$work/source/file"
  make_file
  grep -qE 'COMMIT "[0-9a-f]{12}-dirty"' "$work/commit.inc" || fail "$(cat "$work/commit.inc")"
fi
