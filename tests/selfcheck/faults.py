#!/usr/bin/python3 -B
"""Seeds small faults into the library, one at a time, and asks whether the check names what differs.

A fault is a changed constant, a moved edge (< for <=, ...), an exchanged sign, minimum or condition. All places
where one could stand are known from the text; which of them are drawn depends on the seed and on the line alone, so
that a change of the code elsewhere draws no others. A fault that the compiler refuses or that leaves its code as it
was is none and another is drawn. faults_harmless.txt lists those that change no figure, and why.

usage: faults.py SOURCE BUILD [COUNT] [SEED]    BUILD is a folder of its own, kept to be fast the next time
"""

import contextlib
import filecmp
import hashlib
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import threading
import time

FOLDERS = ("src/analysis", "src/core", "src/imgproc", "src/kernels")
# The choice of the kernels, and memory: no arithmetic.
LEFT_OUT = ("kernel_set.cpp", "processor.cpp", "processor.h", "scratch.cpp", "scratch.h", "variants.h")
PATIENCE_SECONDS = 60  # without a fault it takes a few
NO_FAULT = re.compile(r"prefetch|MORVALE_(DEBUG|INFO|ERROR)|printf|static_assert|^\s*#|^\s*//|\"")
CHANGES = [
    (r"(?<![\w.'])\d+(?![\w.'])", lambda m: str(int(m[0]) + 1)),
    (r"(?<![\w.])\d+\.\d+(?=f?\b)", lambda m: m[0][:-1] + str((int(m[0][-1]) + 1) % 10)),
    (r"(?<![\w.])0x[0-9a-fA-F]+\b", lambda m: hex(int(m[0], 16) ^ 1)),
    (r" < ", lambda m: " <= "),
    (r" <= ", lambda m: " < "),
    (r" > ", lambda m: " >= "),
    (r" >= ", lambda m: " > "),
    (r" \+ ", lambda m: " - "),
    (r" - ", lambda m: " + "),
    (r" && ", lambda m: " || "),
    (r" \|\| ", lambda m: " && "),
    (r"std::min\b", lambda m: "std::max"),
    (r"std::max\b", lambda m: "std::min"),
]


class Fault:
    def __init__(self, path, number, line, match, change):
        self.path, self.number, self.line = path, number, line
        self.changed = line[: match.start()] + change(match) + line[match.end() :]

    def key(self, seed):
        text = f"{seed}|{self.path}|{self.line.strip()}|{self.changed.strip()}"
        return hashlib.sha256(text.encode()).hexdigest()

    def harmless_line(self):
        return f"{self.path}: {self.changed.strip()}"

    def __str__(self):
        return f"{self.path}:{self.number}: {self.line.strip()}\n    -> {self.changed.strip()}"


def possible_faults(source, folders=FOLDERS, left_out=LEFT_OUT, changes=CHANGES):
    for folder in folders:
        for path in sorted((source / folder).iterdir()):
            if path.suffix not in (".cpp", ".h") or path.name in left_out:
                continue
            for number, line in enumerate(path.read_text().splitlines(), 1):
                if NO_FAULT.search(line):
                    continue
                code = line.split("//")[0]
                for pattern, change in changes:
                    for match in re.finditer(pattern, code):
                        yield Fault(path.relative_to(source).as_posix(), number, line, match, change)


def harmless(file):
    lines = file.read_text().splitlines() if file.exists() else []
    return {line.strip() for line in lines if line.strip() and not line.startswith("#")}


class Tree:
    """A copy of the sources with a build of the check beside it."""

    options = ["-DMORVALE_TOOLS=OFF", "-DBUILD_TESTING=OFF"]
    targets = ["morvale_selfcheck"]

    def __init__(self, source, folder):
        self.copy, self.build = folder / "tree", folder / "build"
        self.program = self.build / "tools/selfcheck/morvale_selfcheck"
        listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=source, check=True,
                                capture_output=True, text=True).stdout.split()
        names = {name for name in listed if (source / name).exists()}
        for file in [path for path in self.copy.rglob("*") if path.is_file()]:
            if file.relative_to(self.copy).as_posix() not in names:
                file.unlink()
        for name in names:
            (self.copy / name).parent.mkdir(parents=True, exist_ok=True)
            if not (self.copy / name).exists() or not filecmp.cmp(source / name, self.copy / name, shallow=False):
                shutil.copy(source / name, self.copy / name)  # with a new time: a former fault may stand compiled
        subprocess.run(["cmake", "-S", self.copy, "-B", self.build, "-G", "Ninja", *self.options,
                        "-DCMAKE_CXX_FLAGS=-O1 -w", "-DCMAKE_BUILD_TYPE=None"],
                       check=True, stdout=subprocess.DEVNULL)
        if not self.make():
            sys.exit(f"{self.build} cannot be built without a fault")
        if said := self.outcome_now():
            sys.exit(f"the check does not pass without a fault: {said}")
        self.runnable = [line.split()[0] for line in self.run()[1].splitlines()]
        self.clean = self.code()

    def make(self):
        done = subprocess.run(["cmake", "--build", self.build, "--target", *self.targets], capture_output=True)
        return done.returncode == 0

    def run(self):
        """The exit status of the check and what it printed, up to the first set of kernels that fails."""
        said = ""
        with subprocess.Popen([self.program], stdout=subprocess.PIPE, text=True, errors="replace") as check:
            patience = threading.Timer(PATIENCE_SECONDS, check.send_signal, [signal.SIGALRM])  # it says where it is
            patience.start()
            for line in check.stdout:
                said += line
                if "FAILED" in line:
                    check.kill()
            patience.cancel()
        return check.returncode, said

    def code(self):
        """Digests of the object files that the check can run."""
        digests = {}
        for file in sorted((self.build / "src").rglob("*.o")):
            variant = re.search(r"morvale_kernels_(\w+)\.dir", file.as_posix())
            if variant is None or variant[1] in self.runnable:
                digests[file] = hashlib.sha256(file.read_bytes()).hexdigest()
        return digests

    def outcome_now(self):
        """What the check says of the sources as they are: nothing when it passes."""
        status, said = self.run()
        if "FAILED" in said:
            return said.split("FAILED: ")[1].splitlines()[0]
        return "" if status == 0 else f"NOT NAMED: exit status {status}"

    def outcome(self, fault):
        """What the check says of the fault, or None when it is none."""
        with self.seeded(fault):
            return self.outcome_now() if self.make() and self.code() != self.clean else None

    @contextlib.contextmanager
    def seeded(self, fault):
        file = self.copy / fault.path
        text = file.read_text()
        lines = text.splitlines(keepends=True)
        lines[fault.number - 1] = fault.changed + "\n"
        file.write_text("".join(lines))
        try:
            yield
        finally:
            file.write_text(text)


def drawn_faults(source, seed, known_files, **where):
    """All places in the order of the draw, without those that the files call harmless."""
    known = set().union(*map(harmless, known_files))
    drawn = sorted(possible_faults(source, **where), key=lambda fault: fault.key(seed))
    if stale := known - {fault.harmless_line() for fault in drawn}:
        sys.exit(f"no longer a seed, but in {' or '.join(map(str, known_files))}:\n" + "\n".join(sorted(stale)))
    return [fault for fault in drawn if fault.harmless_line() not in known]


def outcomes(tree, drawn, count):
    """The first `count` that are faults, each with what the check says of it; nothing when it passes."""
    for fault in drawn:
        if count == 0:
            return
        said = tree.outcome(fault)
        if said is not None:
            count -= 1
            yield fault, said


def main(source, build, count=100, seed=1):
    source = pathlib.Path(source).resolve()
    start = time.monotonic()
    drawn = drawn_faults(source, seed, [pathlib.Path(__file__).with_name("faults_harmless.txt")])
    tree = Tree(source, pathlib.Path(build).resolve())
    print(f"{len(drawn)} places for a fault, seed {seed}")
    named = missed = 0
    for fault, said in outcomes(tree, drawn, int(count)):
        found = bool(said) and not said.startswith("NOT NAMED")
        named, missed = named + found, missed + (not found)
        print(f"{fault}\n    {said or 'NOT NAMED: the check passes'}", flush=True)
    print(f"{named} of {named + missed} faults named, {time.monotonic() - start:.0f} s")
    return 0 if not missed else 1


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
