#!/usr/bin/python3
"""Compares how many instructions each job takes, as callgrind counts them, with the counts that are kept.

    check_counts.py PROBE COUNTS.json [--update]

Noise cannot fool it: a count is the same on every run. It depends on the compiler, so another one than the file
names skips the check (exit status 77). Fails when a job takes over 3 % more, and names each. --update keeps the
present counts instead.
"""

import argparse
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

TOLERANCE = 0.03
PATIENCE_SECONDS = 900  # for one job, which takes a second
SKIPPED = 77
KERNEL_SETS = ("portable", "avx2")


class Skip(Exception):
    """Why nothing could be compared here."""


def ask(probe, question):
    return subprocess.run([probe, question], check=True, capture_output=True, text=True).stdout.strip()


def count(probe, kernel_set, job):
    """Instructions of one job, without its set-up."""
    with tempfile.TemporaryDirectory() as folder:
        out = Path(folder) / "callgrind.out"
        command = ["valgrind", "--tool=callgrind", "--toggle-collect=measured_job", f"--callgrind-out-file={out}",
                   probe, kernel_set, job]
        # An environment of its own, so that nothing in the caller's changes the library's choices.
        try:
            run = subprocess.run(command, capture_output=True, text=True, env={"PATH": os.environ["PATH"]},
                                 timeout=PATIENCE_SECONDS)
        except subprocess.TimeoutExpired:
            sys.exit(f"check_counts: {kernel_set} {job} does not end")
        if run.returncode != 0:
            sys.exit(f"check_counts: {kernel_set} {job} failed:\n{run.stderr}")
        found = re.search(r"^totals: (\d+)", out.read_text(), re.MULTILINE)
    if found is None or int(found[1]) == 0:
        sys.exit(f"check_counts: callgrind saw nothing of {kernel_set} {job}")
    return int(found[1])


def count_all(probe):
    runs = [(kernel_set, job) for kernel_set in KERNEL_SETS for job in ask(probe, "--list").splitlines()]
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        totals = pool.map(lambda run: count(probe, *run), runs)
        return {f"{kernel_set}/{job}": total for (kernel_set, job), total in zip(runs, totals)}


def compare(kept, now):
    """The lines to print about jobs that grew, and about others that no longer match the file."""
    grown, hints = [], []
    for job in sorted(kept.keys() | now.keys()):
        if job not in now or job not in kept:
            grown.append(f"{job}: {'new' if job in now else 'gone'}, the kept counts do not match the jobs")
            continue
        change = now[job] / kept[job] - 1
        line = f"{job}: kept {kept[job]}, now {now[job]}, {change * 100:+.1f} %"
        if change > TOLERANCE:
            grown.append(line)
        elif change < -TOLERANCE:
            hints.append(line)
    return grown, hints


def check_place(probe, kept):
    """Raises Skip where the counts would not be comparable."""
    if shutil.which("valgrind") is None:
        raise Skip("valgrind is not installed")
    compiler = ask(probe, "--compiler")
    if kept is not None and compiler != kept["compiler"]:
        raise Skip(f"the counts are kept for {kept['compiler']}, this is {compiler}")
    if "avx2" not in Path("/proc/cpuinfo").read_text(encoding="utf-8"):
        raise Skip("this processor has no AVX2")


def update(probe, path):
    kept = {"compiler": ask(probe, "--compiler"), "counts": count_all(probe)}
    path.write_text(json.dumps(kept, indent=1, sort_keys=True) + "\n", encoding="utf-8")
    print(f"kept {len(kept['counts'])} counts in {path}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("probe")
    parser.add_argument("counts", type=Path)
    parser.add_argument("--update", action="store_true")
    options = parser.parse_args()
    if options.update:
        check_place(options.probe, None)
        update(options.probe, options.counts)
        return 0
    if not options.counts.exists():
        raise Skip(f"no counts are kept: run with --update to make {options.counts}")
    kept = json.loads(options.counts.read_text(encoding="utf-8"))
    check_place(options.probe, kept)
    grown, hints = compare(kept["counts"], count_all(options.probe))
    if hints:
        print("Fewer instructions than kept; --update keeps the gain:", *hints, sep="\n  ")
    if grown:
        print("More instructions than kept (--update accepts them):", *grown, sep="\n  ")
    return 1 if grown else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except Skip as reason:
        print(f"skipped: {reason}")
        sys.exit(SKIPPED)
