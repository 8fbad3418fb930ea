#!/usr/bin/python3
"""Compares how many instructions each job takes with the counts that are kept.

    check_counts.py PROBE COUNTS.json [--emulator COMMAND --plugin PLUGIN.so] [--update]

Callgrind counts; in an emulator, a plugin of qemu-user does. Noise cannot fool it: a count is the same on every run.
It depends on the compiler and the processor, so where the file has no counts for them the check is skipped (exit
status 77). Fails when a job takes over 3 % more, and names each. --update keeps the present counts instead.
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
PATIENCE_SECONDS = 600  # for one job, which takes a second
SKIPPED = 77


class Skip(Exception):
    """Why nothing could be compared here."""


class Callgrind:
    """Counts what the function measured_job does."""
    kernel_sets = ("portable", "avx2")

    def __init__(self):
        if shutil.which("valgrind") is None:
            raise Skip("valgrind is not installed")
        if "avx2" not in Path("/proc/cpuinfo").read_text(encoding="utf-8"):
            raise Skip("this processor has no AVX2")

    def command(self, out):
        return ["valgrind", "--tool=callgrind", "--toggle-collect=measured_job", f"--callgrind-out-file={out}"]

    def total(self, out):
        return int(re.search(r"^totals: (\d+)", out.read_text(), re.MULTILINE)[1])


class Qemu:
    """Counts between two calls of getppid, with the plugin of count_instructions.c."""
    kernel_sets = ("portable", "neon")

    def __init__(self, emulator, plugin):
        if shutil.which(emulator[0]) is None:
            raise Skip(f"{emulator[0]} is not installed")
        self.emulator, self.plugin = emulator, plugin

    def command(self, out):
        return [*self.emulator, "-plugin", f"{self.plugin},out={out}"]

    def total(self, out):
        return int(out.read_text())


def ask(emulator, probe, question):
    return subprocess.run([*emulator, probe, question], check=True, capture_output=True, text=True).stdout.strip()


def count(counter, probe, kernel_set, job):
    """Instructions of one job, without its set-up."""
    with tempfile.TemporaryDirectory() as folder:
        out = Path(folder) / "count"
        # An environment of its own, so that nothing in the caller's changes the library's choices.
        try:
            run = subprocess.run([*counter.command(out), probe, kernel_set, job], capture_output=True, text=True,
                                 env={"PATH": os.environ["PATH"]}, timeout=PATIENCE_SECONDS)
        except subprocess.TimeoutExpired:
            sys.exit(f"check_counts: {kernel_set} {job} does not end")
        if run.returncode != 0:
            sys.exit(f"check_counts: {kernel_set} {job} failed:\n{run.stderr}")
        total = counter.total(out)
    if total == 0:
        sys.exit(f"check_counts: nothing of {kernel_set} {job} was counted")
    return total


def count_all(counter, probe, jobs):
    runs = [(kernel_set, job) for kernel_set in counter.kernel_sets for job in jobs]
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        totals = pool.map(lambda run: count(counter, probe, *run), runs)
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


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("probe")
    parser.add_argument("counts", type=Path)
    parser.add_argument("--emulator", type=str.split, default=[], help="qemu-user and its options")
    parser.add_argument("--plugin", help="what counts in it")
    parser.add_argument("--update", action="store_true")
    options = parser.parse_args()
    counter = Qemu(options.emulator, options.plugin) if options.emulator else Callgrind()
    place = ask(options.emulator, options.probe, "--compiler")
    kept = json.loads(options.counts.read_text(encoding="utf-8")) if options.counts.exists() else {}
    if place not in kept and not options.update:
        raise Skip(f"no counts are kept for {place}, only for {', '.join(kept) or 'nothing'}")
    now = count_all(counter, options.probe, ask(options.emulator, options.probe, "--list").splitlines())
    if options.update:
        kept[place] = now
        options.counts.write_text(json.dumps(kept, indent=1, sort_keys=True) + "\n", encoding="utf-8")
        print(f"kept {len(now)} counts for {place} in {options.counts}")
        return 0
    grown, hints = compare(kept[place], now)
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
