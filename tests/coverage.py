#!/usr/bin/env python3
"""Which lines and branches of the library its tests run: `coverage.py SOURCE_FOLDER BUILD_FOLDER PROFILES`.

Reads the profiles that clang's instrumented programs wrote, prints what no test runs, and fails below all of the lines
or below 95 % of the branches. A line that no test can run says why, after "never run:".
"""

import json
import pathlib
import re
import subprocess
import sys

LEAST_BRANCHES = 95
CONSTANTS = re.compile(r"!?(\w+::)?k[A-Z]\w*( ([=!]=|[<>]) (\d+|k[A-Z]\w*))?")
PROGRAMS = ["src/libmorvale_capture.so", "src/libmorvale_kernels.so", "tests/library_test", "tests/kernels/kernel_test",
            "tests/allocation_test", "tests/unload_test", "tools/selfcheck/morvale_selfcheck"]


def of_library(files, source):
    """The library's files among those of an export, by their names."""
    named = {str(pathlib.Path(file["filename"]).resolve()): file for file in files}
    root = str(source / "src") + "/"
    return {name[len(root) - 4:]: file for name, file in sorted(named.items()) if name.startswith(root)}


def excused(text):
    """The lines from each "never run:" to the end of what it stands in front of."""
    lines, depth, inside = set(), 0, False
    for number, line in enumerate(text.splitlines(), 1):
        if "never run:" in line:
            inside, depth, opened = True, 0, False
        if inside:
            lines.add(number)
            code = line.split("//")[0]
            depth += code.count("{") - code.count("}")
            opened = opened or "{" in code
            inside = depth > 0 or not (opened or code.strip().endswith(";"))
    return lines


def lines_of(lcov, source):
    """How often each line of each file was run, in any instance of a template and any set of kernels."""
    counts, name = {}, ""
    for entry in lcov.splitlines():
        kind, _, rest = entry.partition(":")
        if kind == "SF":
            path = pathlib.Path(rest).resolve()
            name = str(path.relative_to(source)) if path.is_relative_to(source) else ""
        elif kind == "DA":
            line, count = map(int, rest.split(",")[:2])
            table = counts.setdefault(name, {})
            table[line] = max(table.get(line, 0), count)
    return counts


def branches_of(file, text):
    """Of each condition, how often it held and how often not. One of constants alone is none."""
    counts, rows = {}, text.splitlines()
    for branch in file["branches"]:
        place, taken = tuple(branch[:2]), branch[4:6]
        if CONSTANTS.fullmatch(rows[place[0] - 1][place[1] - 1:branch[3] - 1]):
            continue
        counts[place] = [max(pair) for pair in zip(counts.get(place, [0, 0]), taken)]
    return counts


def main():
    source, build, profiles = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    merged = build / "coverage.profdata"
    subprocess.run(["llvm-profdata", "merge", "-sparse", *sorted(profiles.glob("*.profraw")), "-o", merged], check=True)
    objects = [part for program in PROGRAMS for part in ("-object", build / program)][1:]

    def export(form):
        return subprocess.run(["llvm-cov", "export", f"-format={form}", "-instr-profile", merged, *objects], check=True,
                              capture_output=True, text=True).stdout
    lines, files = lines_of(export("lcov"), source), of_library(json.loads(export("text"))["data"][0]["files"], source)
    run = taken = all_lines = all_branches = 0
    for name, file in files.items():
        text = (source / name).read_text()
        without = excused(text)
        here = {line: count for line, count in lines.get(name, {}).items() if line not in without}
        sides = {place: pair for place, pair in branches_of(file, text).items() if place[0] not in without}
        all_lines += len(here)
        run += sum(count > 0 for count in here.values())
        all_branches += 2 * len(sides)
        taken += sum(count > 0 for pair in sides.values() for count in pair)
        for what, where in (("never run", [line for line, count in sorted(here.items()) if not count]),
                            ("always true or always false", sorted({p[0] for p, pair in sides.items() if 0 in pair}))):
            if where:
                print(f"{name}: {what}: {', '.join(map(str, where))}")
    share = 100 * taken / all_branches
    print(f"src: {run} of {all_lines} lines ({100 * run / all_lines:.2f} %), "
          f"{taken} of {all_branches} branches ({share:.2f} %)")
    return 0 if run == all_lines and share >= LEAST_BRANCHES else 1


if __name__ == "__main__":
    sys.exit(main())
