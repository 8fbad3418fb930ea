"""Reads a session bundle with NumPy alone: python3 read_bundle.py BUNDLE. docs/session-bundle.md has the format."""
import json
import pathlib
import sys

import numpy as np

PERSON = np.dtype([("bright_count", "<u4", 2), ("face_y_avg", "<i4"), ("hsv_min", "<i4", 3), ("hsv", "<i4", 3),
                   ("skin_ratio", "<i4"), ("box", "<i4", 4)])
RECORD = np.dtype([("ver", "<i4"), ("human_ratio", "<i4"), ("meta", PERSON, 5)])


def read_bundle(folder):
    """The session's description, its records and its frames; a line that a crash cut short is left out."""
    folder = pathlib.Path(folder)
    session = json.loads((folder / "session.json").read_text("utf-8"))
    lines = (folder / "metadata.jsonl").read_text("utf-8").split("\n")[:-1]
    frames = [json.loads(line) for line in lines]
    records = np.fromfile(folder / "records.bin", RECORD, count=len(frames))
    for frame in frames:
        frame["gate_level"] = np.float32(frame["gate_level"])  # "nan", "inf" and "-inf" are strings
        if "logits" in frame:
            frame["logits"] = np.load(folder / frame["logits"])
        if "nv21" in frame:
            stride, height = frame["stride"] or frame["width"], frame["height"]
            found = frame.get("chroma", "found") == "found"  # the stride leads to the chroma plane
            plane = np.fromfile(folder / frame["nv21"], np.uint8)
            row = max(stride, frame["width"])
            frame["luma"] = plane[:row * height].reshape(height, row)
            frame["chroma"] = plane[(stride if found else row) * height:]  # V, U, V, U ...; rows of `width` bytes
    return session, records, frames


if __name__ == "__main__":
    session, records, frames = read_bundle(sys.argv[1])
    print(f"{session['made_by']}: camera {session['camera_type']}, {len(frames)} frames")
    for frame, record in zip(frames, records):
        label = np.bincount(frame["logits"].argmax(2).ravel(), minlength=5) if "logits" in frame else "no scores"
        luma = f"luma {frame['luma'].mean():.1f}" if "luma" in frame else "no pixels"
        print(f"frame {frame['frame']}: person {record['human_ratio']} %, {luma}, cells by label {label}")
