#!/usr/bin/python3
"""Models the vector loops for 64-bit Arm and keeps the cycles in bench/arm_cycles.json, for the page.

    bench/arm_cycles.py [--libyuv libyuv.a]

Compiles the kernels with GCC and clang, cuts the inner loops out and lets llvm-mca step them through its models of four
cores: all data in the first-level cache, every branch foreseen. libyuv.a is Debian's for arm64, out of libyuv-dev; without
it its figures stay as they are. Needs g++-aarch64-linux-gnu, clang and llvm-19.
"""

import argparse
import json
import re
import subprocess
import tempfile
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
KEPT = ROOT / "bench/arm_cycles.json"
MCA = "llvm-mca-19"
CORES = {"A55": "cortex-a55", "N1": "neoverse-n1", "N2": "neoverse-n2", "V2": "neoverse-v2"}
FLAGS = ["-std=c++20", "-O3", "-fPIC", "-ffp-contract=off", "-DMORVALE_VARIANT=neon", f"-I{ROOT}/include",
         f"-I{ROOT}/src"]
COMPILERS = {"GCC": ["aarch64-linux-gnu-g++"], "clang": ["clang++", "--target=aarch64-linux-gnu"]}


@dataclass
class Loop:
    name: str
    file: str
    function: str  # a regular expression
    items: int  # pixels or bytes a round
    # compiler -> which of the function's inner loops, counted from the one with most vector instructions
    ranks: dict
    libyuv: tuple = ()  # (function, items a round) whose cycles add up


BOTH = {"GCC": 0, "clang": 0}
LOOPS = [
    Loop("NV21 to RGB", "color_rows", r"decode<.*0, .*1>\(", 32, BOTH, (("NV21ToRGB24Row_NEON", 8),)),
    Loop("bilinear, near columns", "bilinear_rows", r"blend_row<1>", 8, {"GCC": 0, "clang": 2},
         (("ScaleFilterCols_NEON", 8),)),
    Loop("bilinear, far columns", "bilinear_rows", r"blend_blocks<1>|blend_row<1>", 8, {"GCC": 0, "clang": 1},
         (("ScaleFilterCols_NEON", 8),)),
    Loop("half ratio, 1.5", "half_ratio_rows", r"half_ratio<1>", 32, {"GCC": 3, "clang": 3}),
    Loop("half ratios, 2.5 to 14.5", "half_ratio_rows", r"half_ratio<1>", 32, {"GCC": 1, "clang": 1}),
    Loop("network input", "network_rows", r"to_input", 16, BOTH, (("ByteToFloatRow_NEON", 8),)),
    Loop("RGB to NV21, row with chroma", "color_rows", r"encode<0, 2>", 16, {"GCC": 1},
         (("RAWToYJRow_NEON", 16), ("RAWToUVJRow_NEON", 32))),
    Loop("grey", "color_rows", r"bgr_to_grey", 16, BOTH, (("RAWToYJRow_NEON", 16),)),
    Loop("transpose, bytes", "rotate_blocks", r"transpose<.*ByteSamples>", 256, {"clang": 0},
         (("TransposeWx8_NEON", 64),)),
    Loop("reverse, bytes", "rotate_blocks", r"reverse<.*ByteSamples>", 64, BOTH, (("MirrorRow_NEON", 32),)),
]
BRANCH = re.compile(r"^(b|b\.\w+|cbz|cbnz|tbz|tbnz)\s")
VECTOR = re.compile(r"\b[vq]\d+")


def functions(object_file):
    """name -> [(address, instruction)]"""
    listing = subprocess.run(["aarch64-linux-gnu-objdump", "-dC", "--no-show-raw-insn", object_file], check=True,
                             capture_output=True, text=True).stdout
    found, current = {}, []
    for line in listing.splitlines():
        if head := re.match(r"^[0-9a-f]+ <(.*)>:$", line):
            current = found.setdefault(head[1], [])
        elif code := re.match(r"^\s+([0-9a-f]+):\t(.*)$", line):
            current.append((int(code[1], 16), code[2].split("//")[0].strip()))
    return found


def inner_loops(code):
    """Loops that hold no other, those with the most vector instructions first."""
    places = {address: i for i, (address, _) in enumerate(code)}
    loops = set()
    for i, (address, text) in enumerate(code):
        target = re.search(r"\b([0-9a-f]+) <", text) if BRANCH.match(text) else None
        if target and int(target[1], 16) <= address and int(target[1], 16) in places:
            loops.add((places[int(target[1], 16)], i))
    inner = [a for a in loops if not any(b != a and b[0] >= a[0] and b[1] <= a[1] for b in loops)]
    bodies = [[text for _, text in code[first:last + 1]] for first, last in sorted(inner)]
    return sorted(bodies, key=lambda body: -sum(bool(VECTOR.search(text)) for text in body))


def cycles(body):
    """Cycles a round on each core."""
    cut = [re.sub(r"\b[0-9a-f]+ <.*$", ".Lx", text) if BRANCH.match(text) else re.sub(r"\s*<.*$", "", text)
           for text in body]
    result = {}
    for core, model in CORES.items():
        out = subprocess.run([MCA, "-mtriple=aarch64", f"-mcpu={model}", "-mattr=+all", "-iterations=200",
                              "-all-views=0", "-summary-view"], input="\n".join(cut), check=True, capture_output=True,
                             text=True).stdout
        result[core] = int(re.search(r"Total Cycles:\s+(\d+)", out)[1]) / 200
    return result


def of_loop(found, pattern, items, rank):
    code = next(code for name, code in found.items() if re.search(pattern, name) and inner_loops(code))
    return {core: round(count / items, 3) for core, count in cycles(inner_loops(code)[rank]).items()}


def ours(folder):
    rows, objects = {}, {}
    for loop in LOOPS:
        for compiler, rank in loop.ranks.items():
            if (loop.file, compiler) not in objects:
                out = Path(folder) / f"{loop.file}_{compiler}.o"
                subprocess.run([*COMPILERS[compiler], *FLAGS, "-c", f"{ROOT}/src/kernels/{loop.file}_simd.cpp", "-o", out],
                               check=True)
                objects[loop.file, compiler] = functions(out)
            found = of_loop(objects[loop.file, compiler], loop.function, loop.items, rank)
            rows.setdefault(loop.name, {})[compiler] = found
    return rows


def of_libyuv(archive, folder):
    subprocess.run(["ar", "x", Path(archive).resolve()], cwd=folder, check=True)
    found = {}
    for part in Path(folder).glob("*neon64*.o"):
        found.update(functions(part))
    return {loop.name: {core: round(sum(of_loop(found, f"^{name}$", items, 0)[core] for name, items in loop.libyuv), 3)
                        for core in CORES} for loop in LOOPS if loop.libyuv}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--libyuv")
    options = parser.parse_args()
    kept = json.loads(KEPT.read_text(encoding="utf-8")) if KEPT.exists() else {}
    with tempfile.TemporaryDirectory() as folder:
        rows = ours(folder)
        peers = of_libyuv(options.libyuv, folder) if options.libyuv else {
            name: row["libyuv"] for name, row in kept.items() if "libyuv" in row}
    for name, row in peers.items():
        rows[name]["libyuv"] = row
    KEPT.write_text(json.dumps(rows, indent=1) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
