#!/usr/bin/python3
"""Turns a run of morvale_bench (JSON) into docs/performance.md and its charts.

    report.py RUN.json DOCS_FOLDER
"""

import json
import statistics
import sys
from pathlib import Path

from charts import growth_chart, ratio_chart
from measurements import Measurements

HERE = Path(__file__).parent

PAGE = """<!-- Made by bench/report.py. Do not edit: run ./dev bench. -->
# How fast it is

Every job of the library against the libraries that are best known for this work, libyuv and OpenCV, in one run of
one program. The library's bytes are exact, whatever the processor: each vector kernel gives what the plain loop
gives. Most peers do not do quite the same operation; [what differs](#what-the-peers-do-differently) says how.

![Time of each job as a share of the fastest peer's](images/performance.svg)

{summary}

**RGB to NV21.** {rgb_nv21}

Half turns only move memory: nothing can be faster than the floor. Grey and RGB to NV21 are compared with
libyuv {libyuv}; newer versions, built with AVX-512 rows, are faster at both.

## The run

{machine}

Times are microseconds of processor time, medians of {repetitions} repetitions that were interleaved at random, one
thread each. Only ratios within one run count: the spread of the repetitions (standard deviation ÷ mean) was
{spread_median} in the median and below {spread_high} in nine of ten cases. To repeat it: `./dev bench`.

- **ours** is the library with its best kernels for this processor ({kernel_set}), **portable** the same library with
  its plain loops.
- **fastest peer** is the fastest library call that does the job. Calls that do clearly less or more than the job do
  not compete; they stand in [a table of their own](#other-ways). **chain** strings library calls together, the
  fastest for each step.
- **floor** moves the job's data and computes nothing: a copy of the bytes that are both read and written, a fill of
  further written ones, one load from each cache line of further read ones.
- Everybody's memory stays with the process and every temporary is kept, so nobody pays page faults. `*_cold` takes
  another frame each time, out of enough that none is in a cache when its turn comes, as a camera's frame is.
- Whole frames run from the caller's record to the 288 bytes of the result. The network answers at once, on both
  sides.

{times}

## What the peers do differently

{differences}

## Other ways

Calls of the same libraries that do not compete, because they do clearly less or more than the job, or were not the
fastest.

{others}

## How time grows

![Time per pixel and per region](images/growth.svg)

The shrink reads two source rows for each of its 192 output rows, so its time hangs on the output, and on the cache
misses of the source; the largest frame is 32 times the output's size exactly, and there the rule only samples.
Region finding works on runs and words of the mask. A scene that needs more than 255 labels falls back to the loop
over pixels, because labels are bytes: that is the step in the curve. It comes before the 255th region, for an outline
that moves to the left from row to row takes a new label each time.

## On 64-bit Arm

No Arm machine was at hand: **nothing in this section was measured on silicon**, and it is no claim of time. Two things
can be had without one.

**Counted:** the instructions that one call executes, whole frames from the record to the result included. qemu-user
runs the NEON build of {arm_compiler} and a plugin of it counts (`bench/instructions/`). The counts are exact and the same
on every run; `./dev arm64` counts anew and fails where one has grown by more than 3 %. An instruction is not a
cycle, and a load from memory counts like one from the cache.

{arm_counts}

**Modelled:** cycles a pixel or byte of the inner loops, as llvm-mca 19 steps them through its models of four cores
(`bench/arm_cycles.py`): everything in the first-level cache, every branch foreseen. Neoverse N1 stands for Cortex-A76,
N2 for A710, V2 for X3. libyuv {libyuv} is Debian's package for arm64, its loops cut out and stepped alike; its
arithmetic differs as on this page's other half, and to its columns belongs a pass over the rows besides.

{arm_cycles}

Two loops stay behind libyuv's in the model. Grey has weights of 16 bits: two products a pixel in lanes of 32 bits, where
8-bit weights take three in lanes of 16. RGB to NV21 wants the quotient of a sum by 1000, exactly, and chroma from sums
of 22 bits: more than twice the products. On NEON it is an integer division with a look at exact multiples of 1000, where
the rule's float sum may come out one lower; AVX2 stays with floats.
"""


def figure(value):
    """Three significant digits, never an exponent."""
    if value >= 99.95:
        return f"{value:.0f}"
    return f"{value:.1f}" if value >= 9.995 else f"{value:.2f}" if value >= 0.0995 else f"{value:.3f}"


def table(header, rows, left=1):
    align = ["---"] * left + ["---:"] * (len(header) - left)
    return "\n".join("| " + " | ".join(cells) + " |" for cells in [header, align, *rows])


def verdict(job):
    if not job.target:
        return ""
    if job.excess <= 0:
        return "yes"
    return f"missed by {job.excess:.0%}".replace("%", " %") if job.excess >= 0.01 else "missed by less than 1 %"


def target(job):
    if not job.portable_target:
        return f"{job.target:.2f}" if job.target else ""
    return f"{job.target:.2f}, and {job.portable_target:.2f} of portable"


def times_table(jobs):
    header = ["job", "ours", "portable", "libyuv", "OpenCV", "floor", "fastest peer", "ours ÷ fastest peer",
              "ours ÷ portable", "target", "met"]
    rows = []
    for job in jobs:
        peer, time = job.fastest_peer
        shown = [figure(job.times[way]) if way in job.times else ""
                 for way in ("ours", "portable", "libyuv", "opencv", "floor")]
        rows.append([job.name, *shown, f"{peer} {figure(time)}", f"**{job.ratio:.2f}**",
                     f"{job.portable_ratio:.2f}", target(job), verdict(job)])
    return table(header, rows)


def others_table(jobs):
    rows = [[job.name, way, figure(time), f"{job.ours / time:.2f}"]
            for job in jobs for way, time in job.peers.items()
            if way not in ("libyuv", "opencv", "chain") and way != job.fastest_peer[0]]
    return table(["job", "way", "µs", "ours ÷ this"], rows, left=2)


def summary(jobs):
    with_target = [job for job in jobs if job.target]
    missed = [job for job in with_target if job.excess > 0]
    faster = sum(job.ratio < 1 for job in jobs)
    text = (f"Ours is faster than the fastest peer in {faster} of {len(jobs)} jobs and meets its target in "
            f"{len(with_target) - len(missed)} of {len(with_target)}.")
    if missed:
        text += " Missed: " + ", ".join(f"{job.name} ({verdict(job).removeprefix('missed ')})" for job in missed) + "."
    return text


def rgb_nv21(job):
    peer, time = job.fastest_peer
    why = ("The rule takes luma from 24-bit float sums and chroma from double precision, and those bits are the "
           "interface; libyuv adds 8-bit products. That is more work a pixel, and integers alone do not do: 836 of the 2²⁴ "
           "colours come out one lower in float.")
    if job.ratio > 1:
        return (f"Here the peer is faster: {peer} needs {figure(time)} µs, ours {figure(job.ours)}, "
                f"{job.ratio:.2f} times as long. {why}")
    return f"Ours needs {figure(job.ours)} µs, {peer} {figure(time)}. {why}"


def machine(context):
    caches = {f"L{c['level']}": c["size"] // 1024 for c in context["caches"] if c["type"] != "Instruction"}
    rows = [["processor", f"{context['processor']}, {context['num_cpus']} cores seen, "
             f"{context['mhz_per_cpu']} MHz reported"],
            ["caches", ", ".join(f"{name} {size} KiB" for name, size in caches.items())],
            ["libraries", f"libyuv {context['libyuv']}, OpenCV {context['opencv']} (`cv::setNumThreads(1)`)"],
            ["compiler", context["compiler"]],
            ["measured", f"{context['date'][:10]}, load when it began {context['load_avg'][0]:.1f}"]]
    return table(["", ""], rows, left=2)


def arm_compiler(counts):
    """The one whose counts are kept: "GNU 12 aarch64"."""
    return next(name for name in counts if name.endswith("aarch64"))


def arm_counts_table(counts):
    """Whole frames, then every job that the vector loops change."""
    jobs = [name.removeprefix("neon/") for name in counts if name.startswith("neon/")]
    frames = [job for job in jobs if "frame" in job]
    others = [job for job in jobs if job not in frames and counts[f"neon/{job}"] < 0.95 * counts[f"portable/{job}"]]
    rows = [[job, *(f"{counts[f'{kind}/{job}']:,}" for kind in ("neon", "portable")),
             f"{counts[f'neon/{job}'] / counts[f'portable/{job}']:.2f}"] for job in frames + others]
    return table(["job", "NEON", "portable", "NEON ÷ portable"], rows)


def arm_cycles_table(loops):
    cores = ("A55", "N1", "N2", "V2")
    rows = [[name, compiler, *(f"{cycles[core]:.2f}" for core in cores)]
            for name, compilers in loops.items() for compiler, cycles in compilers.items()]
    return table(["loop", "built by", "Cortex-A55", "Neoverse N1", "Neoverse N2", "Neoverse V2"], rows, left=2)


def write_page(run, docs):
    jobs = run.in_order()
    spreads = sorted(run.spreads)
    counts = json.loads((HERE / "instructions/counts.json").read_text(encoding="utf-8"))
    place = arm_compiler(counts)
    cycles = json.loads((HERE / "arm_cycles.json").read_text(encoding="utf-8"))
    page = PAGE.format(
        summary=summary(jobs), rgb_nv21=rgb_nv21(run.jobs["rgb_nv21_1920x1080"]), libyuv=run.context["libyuv"],
        machine=machine(run.context), repetitions=run.repetitions, kernel_set=run.context["kernel_set"],
        spread_median=f"{statistics.median(spreads) * 100:.1f} %",
        spread_high=f"{spreads[len(spreads) * 9 // 10] * 100:.1f} %", times=times_table(jobs),
        differences=table(["job", "what differs"], [[job.name, job.differs] for job in jobs], left=2),
        others=others_table(jobs), arm_compiler=" ".join(place.replace("GNU", "GCC").split()[:2]),
        arm_counts=arm_counts_table(counts[place]), arm_cycles=arm_cycles_table(cycles))
    images = docs / "images"
    images.mkdir(parents=True, exist_ok=True)
    (docs / "performance.md").write_text(page, encoding="utf-8")
    (images / "performance.svg").write_text(ratio_chart(jobs), encoding="utf-8")
    (images / "growth.svg").write_text(growth_chart(run.curves), encoding="utf-8")


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__.strip())
    run = Measurements(sys.argv[1])
    if run.repetitions < 5:
        sys.exit("report.py: the page takes medians of at least five repetitions")
    write_page(run, Path(sys.argv[2]))
    print(summary(run.in_order()))


if __name__ == "__main__":
    main()
