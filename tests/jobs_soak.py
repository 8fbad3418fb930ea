#!/usr/bin/python3 -B
"""Replays recordings at once, as many as the machine has cores, again and again, and holds every answer to what they
gave one after the other: no record may be lost, doubled or changed.

usage: jobs_soak.py PROGRAM [SECONDS]    600 unless told
"""

import os
import subprocess
import sys
import tempfile
import time

RECORD_BYTES = 288
CAMERAS = ("front", "back")


def main(program, seconds=600):
    with tempfile.TemporaryDirectory() as folder:
        scenes = []
        for seed in range(1, 13):  # of different lengths, so that they end out of turn
            scenes.append(f"{folder}/{seed}")
            subprocess.run([program, "scene", "--out", scenes[-1], "--seed", str(seed), "--frames", str(5 * seed),
                            "--size", "320x240", "--camera", CAMERAS[seed % 2]], check=True, stdout=subprocess.DEVNULL)

        def records(jobs):
            return subprocess.run([program, "replay", "--jobs", str(jobs), "--format", "records", *scenes], check=True,
                                  stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout

        alone = records(1)
        begin, runs = time.monotonic(), 0
        while time.monotonic() - begin < float(seconds):
            if records(os.cpu_count()) != alone:
                sys.exit(f"jobs_soak.py: run {runs + 1} gives other records than one job")
            runs += 1
        each = len(alone) // RECORD_BYTES
    print(f"{runs} runs of {each} records by {os.cpu_count()} jobs, all as by one job")


if __name__ == "__main__":
    if not 2 <= len(sys.argv) <= 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
