#!/usr/bin/python3 -B
"""Runs what proves the library, and writes docs/assurance.md from what the runs said.

usage: assurance.py [NAME...]    runs these, or all; a figure that is not made anew stays with its date
       assurance.py --list       names them
"""

import datetime
import json
import pathlib
import re
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
KEPT = ROOT / "docs/assurance.json"
PAGE = ROOT / "docs/assurance.md"
CTEST = r"\d+% tests passed, .*"

# Name, what it holds, the command, and which lines of its output are the figure.
RUNS = [
    ("reach", "Every kernel keeps to the reach its header states: each buffer ends at a forbidden page or begins behind one, "
     "0 to 130 × 0 to 34 and twelve camera sizes, every set of kernels; a byte less faults",
     "MORVALE_EVERY_SIZE=1 ctest --preset release -R '^Reach'", CTEST),
    ("fuzz", "Fuzzers of the frames' state machine, the kernels, the labellers and every parser, with the address, "
     "undefined-behaviour and integer checks", "./dev fuzz --minutes 14", r"\w+: \d+ runs, .*"),
    ("allocations", "Every allocation of a session fails once; the call made again goes on, nothing is left behind",
     "ctest --preset release -R '^Allocation.AfterEach'", CTEST),
    ("runtime", "The runtime fails in ten ways at each frame of a session of 60",
     "ctest --preset release -R '^Session.AFaultAtAnyFrame'", CTEST),
    ("outputs", "Full disk, file-size limit, read-only folder, broken pipe and SIGKILL while each kind of output is written",
     "ctest --preset release -R '^outputs$|^RecordTest.A(Full|File)'", CTEST),
    ("threads", "The thread sanitizer over a caller that moves between threads", "ctest --preset sanitize-threads", CTEST),
    ("memory", "The memory sanitizer over kernels, core and analyses", "ctest --preset sanitize-memory", CTEST),
    ("addresses", "The address and undefined-behaviour sanitizers over all tests but those that look at what the program says",
     "ctest --preset sanitize-clang -E '^(outputs|at_scale|convert|selfcheck|manual|report|pack)$'", CTEST),
    ("guards", "Checks of virtual calls and integer overflow, as a device's build has them", "ctest --preset guards", CTEST),
    ("valgrind", "Valgrind over sessions of both cameras, of one thread and of several",
     "valgrind -q --error-exitcode=1 --leak-check=full build/release/tests/threads_test && echo no error", r"no error"),
    ("tidy", "clang-tidy over the library and the stand-ins", "./dev tidy && echo no finding", r"no finding"),
    ("soak", "A million small frames, front and back in turn: resident memory", "./dev soak", r"\d+ samples, .*?KiB"),
    ("jobs", "Recordings replayed at once for ten minutes, as many as there are cores: no record lost, doubled or changed",
     "tests/jobs_soak.py build/release/tools/morvale/morvale", r"\d+ runs of .*"),
    ("coverage", "What of the library its tests run", "./dev coverage", r"src: .*"),
    ("mutate", "Seeded faults in the library and the stand-ins that a test catches", "./dev mutate", r"\d+ of \d+ faults caught.*"),
    ("headers", "Every public header compiles alone", "cmake --build --preset release --target headers_alone && echo all of them",
     r"all of them"),
    ("same", "Two builds in two folders give one library, byte for byte",
     "cmp build/{release,bench}/src/libmorvale_capture.so && echo the same file", r"the same file"),
    ("faults", "Seeded faults that the check of the bits names", "./dev faults", r"\d+ of \d+ faults named.*"),
]


def run(command, pattern):
    begin = time.monotonic()
    done = subprocess.run(["bash", "-o", "pipefail", "-c", command], cwd=ROOT, text=True, errors="replace",
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    figures = [match[0].strip() for match in re.finditer(pattern, done.stdout)]
    return {"status": done.returncode, "figures": figures, "seconds": round(time.monotonic() - begin),
            "day": datetime.date.today().isoformat()}


def page(kept):
    lines = ["# What proves it", "",
             "Made by `tests/assurance.py` from its runs: what is held, the command that holds it, and what it last said. "
             "`./dev test --all` runs the short form of most of it at every change; this page has the long ones.", "",
             "| What | Command | Figure | Seconds | On |", "|---|---|---|---|---|"]
    for name, what, command, _ in RUNS:
        cell = command.replace("|", "\\|")
        said = kept.get(name, {"status": 0, "figures": ["not run yet"], "seconds": "", "day": ""})
        figure = "<br>".join(said["figures"]) or "nothing"
        if said["status"]:
            figure += f" (**exit status {said['status']}**)"
        lines.append(f"| {what} | `{cell}` | {figure} | {said['seconds']} | {said['day']} |")
    return "\n".join(lines) + "\n"


def main(names):
    known = [name for name, *_ in RUNS]
    if names == ["--list"]:
        print("\n".join(known))
        return 0
    if unknown := set(names) - set(known):
        sys.exit(f"assurance.py: no such run: {', '.join(sorted(unknown))} (there are {', '.join(known)})")
    kept = json.loads(KEPT.read_text()) if KEPT.exists() else {}
    for name, _, command, pattern in RUNS:
        if names and name not in names:
            continue
        print(f"{name}: {command}", flush=True)
        kept[name] = run(command, pattern)
        print(f"    {'; '.join(kept[name]['figures'])}, exit status {kept[name]['status']}, {kept[name]['seconds']} s", flush=True)
        KEPT.write_text(json.dumps(kept, indent=1) + "\n")
        PAGE.write_text(page(kept))
    return 1 if any(kept[name]["status"] for name in kept) else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
