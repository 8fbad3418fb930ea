"""Reads a session bundle with NumPy alone: python3 read_bundle.py BUNDLE. docs/session-bundle.md has the format.

Compressed files (*.zst) need the program zstd.
"""
import io
import json
import pathlib
import subprocess
import sys
import tarfile

import numpy as np

PERSON = np.dtype([("bright_count", "<u4", 2), ("face_y_avg", "<i4"), ("hsv_min", "<i4", 3), ("hsv", "<i4", 3),
                   ("skin_ratio", "<i4"), ("box", "<i4", 4)])
RECORD = np.dtype([("ver", "<i4"), ("human_ratio", "<i4"), ("meta", PERSON, 5)])


def files_of(bundle):
    """A function that gives the bytes of a bundle's file by its name."""
    bundle = pathlib.Path(bundle)
    if bundle.is_dir():
        stored = lambda name: (bundle / name).read_bytes()
    else:
        tar = tarfile.open(bundle)
        members = {member.name.removeprefix("./"): member for member in tar}
        stored = lambda name: tar.extractfile(members[name]).read()

    def content(name):
        data = stored(name)
        return subprocess.run(["zstd", "-dcq"], input=data, capture_output=True, check=True).stdout \
            if name.endswith(".zst") else data
    return content


def thin_planes(data):
    """The samples of luma, rows by columns, and of chroma, rows by columns by V and U, each with its rows and columns."""
    assert data[:8] == b"MVTHIN01"
    words, at, grids = np.frombuffer(data[8:len(data) // 4 * 4], "<u4"), 0, []
    for _ in range(2):
        rows, columns = words[at + 3:at + 5]  # behind where the plane begins, its bytes and those of a row
        at += 5
        grids.append((np.cumsum(words[at:at + rows]), np.cumsum(words[at + rows:at + rows + columns])))
        at += rows + columns
    samples = np.frombuffer(data, np.uint8, offset=8 + 4 * int(at))
    (rows, columns), (chroma_rows, chroma_columns) = grids
    luma = samples[:len(rows) * len(columns)].reshape(len(rows), len(columns))
    chroma = samples[luma.size:].reshape(len(chroma_rows), len(chroma_columns), 2)
    return (luma, rows, columns), (chroma, chroma_rows, chroma_columns)


def read_bundle(bundle):
    """The session's description, its records and its frames; a line that a crash cut short is left out."""
    content = files_of(bundle)
    session = json.loads(content("session.json"))
    lines = content("metadata.jsonl").decode().split("\n")[:-1]
    frames = [json.loads(line) for line in lines]
    records = np.frombuffer(content("records.bin"), RECORD, count=len(frames))
    for frame in frames:
        frame["gate_level"] = np.float32(frame["gate_level"])  # "nan", "inf" and "-inf" are strings
        if "logits" in frame:
            frame["logits"] = np.load(io.BytesIO(content(frame["logits"])))
        if "nv21" in frame:
            stride, height = frame["stride"] or frame["width"], frame["height"]
            found = frame.get("chroma", "found") == "found"  # the stride leads to the chroma plane
            plane = np.frombuffer(content(frame["nv21"]), np.uint8)
            row = max(stride, frame["width"])
            frame["luma"] = plane[:row * height].reshape(height, row)
            frame["chroma"] = plane[(stride if found else row) * height:]  # V, U, V, U ...; rows of `width` bytes
        if "thin" in frame:
            (frame["luma"], *_), (frame["chroma"], *_) = thin_planes(content(frame["thin"]))
    return session, records, frames


if __name__ == "__main__":
    session, records, frames = read_bundle(sys.argv[1])
    print(f"{session['made_by']}: camera {session['camera_type']}, {len(frames)} frames")
    for frame, record in zip(frames, records):
        label = np.bincount(frame["logits"].argmax(2).ravel(), minlength=5) if "logits" in frame else "no scores"
        luma = f"luma {frame['luma'].mean():.1f}" if "luma" in frame else "no pixels"
        print(f"frame {frame['frame']}: person {record['human_ratio']} %, {luma}, cells by label {label}")
