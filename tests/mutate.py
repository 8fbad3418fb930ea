#!/usr/bin/python3 -B
"""Seeds small faults into the library and the stand-ins, one at a time, and asks whether a test fails.

Beside the faults of selfcheck/faults.py a statement may be missing. Those that change nothing anybody could see stand in
mutate_harmless.txt and selfcheck/faults_harmless.txt, each with the reason. Ends with 0 when at least 95 % of the others are caught.

usage: mutate.py SOURCE BUILD [COUNT] [SEED] [again]    BUILD is a folder of its own, kept to be fast the next time

With "again" only those that survived the last time are tried once more: new tests undo nothing that was caught.
"""

import hashlib
import json
import pathlib
import re
import resource
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).parent / "selfcheck"))
import faults  # noqa: E402

FOLDERS = (*faults.FOLDERS, "src/platform", "workstation/record", "workstation/runtime", "workstation/session")
CHANGES = [*faults.CHANGES, (r"(?<=^  )\s*[\w.>:\[\]-]+(\(.*\)| [-+|&]?= .*|\+\+);$", lambda m: ";")]
LEAST_PERCENT = 95
PATIENCE_SECONDS = 120
MOST_MEMORY = 8 << 30
# What looks at the folder, what it is built by, and the first that fails ends it.
LIBRARY = ("tests/library_test", "tests/allocation_test", "tests/threads_test", "tests/kernels/kernel_test",
           "tools/selfcheck/morvale_selfcheck", "tests/unload_test")
STAND_INS = ("tests/bundle_test", "tests/runtime_test", "tests/record_test")
ALSO_BUILT = {"tests/record_test": ["morvale"]}  # the program that its replays start


def limit_memory():
    """A fault may ask for all of it."""
    resource.setrlimit(resource.RLIMIT_AS, (MOST_MEMORY, MOST_MEMORY))


class Tests(faults.Tree):
    """A build of the tests. Each is built when its turn comes: most faults are caught by the first."""

    options = ["-DMORVALE_REPORT=OFF", "-DBUILD_TESTING=ON"]
    programs = (*LIBRARY, *STAND_INS)
    known = {}  # outcomes, by the fault; None where it is none

    def run(self):
        return 0, ""  # which sets of kernels run here, code() knows

    def make(self, *targets):
        self.targets = targets
        return not targets or super().make()

    def outcome_now(self):
        """What the first program says that fails, nothing when all pass, None when one cannot be built."""
        for program in self.programs:
            if not self.make(program.split("/")[-1], *ALSO_BUILT.get(program, [])):
                return None
            flags = ["--gtest_brief=1", "--gtest_fail_fast"] if program.endswith("_test") else []
            try:
                done = subprocess.run([self.build / program, *flags], capture_output=True, text=True, errors="replace",
                                      timeout=PATIENCE_SECONDS, preexec_fn=limit_memory)
            except subprocess.TimeoutExpired:
                return f"{program} does not end"
            if done.returncode != 0:
                failed = re.search(r"\[  FAILED  \] (\S+)|FAILED: (.*)", done.stdout)
                return f"{program}: {(failed[1] or failed[2]) if failed else 'exit status ' + str(done.returncode)}"
        return ""

    def code(self):
        """Digests of the objects that this processor can run, by the part that they belong to."""
        return {part: [hashlib.sha256(file.read_bytes()).hexdigest() for file in sorted((self.build / part).rglob("*.o"))
                       if "morvale_kernels_avx512" not in file.as_posix()] for part in ("src", "workstation")}

    def outcome(self, fault):
        if fault not in self.known:
            part = fault.path.split("/")[0]  # the other may still be built with its last fault
            self.programs = LIBRARY if part == "src" else STAND_INS
            with self.seeded(fault):
                said = self.outcome_now()
                self.known[fault] = None if said == "" and self.code()[part] == self.clean[part] else said
        return self.known[fault]


def main(source, build, count=300, seed=1, again=""):
    source = pathlib.Path(source).resolve()
    start = time.monotonic()
    memory = pathlib.Path(build) / "outcomes.json"
    known = json.loads(memory.read_text()) if again and memory.exists() else {}
    here = pathlib.Path(__file__).parent
    drawn = faults.drawn_faults(source, seed, [here / "mutate_harmless.txt", here / "selfcheck/faults_harmless.txt"],
                                folders=FOLDERS, left_out=(), changes=CHANGES)
    tree = Tests(source, pathlib.Path(build).resolve())
    tree.known = {fault: known[fault.key(seed)] for fault in drawn if known.get(fault.key(seed), "") != ""}
    print(f"{len(drawn)} places for a fault, seed {seed}", flush=True)
    caught = tried = 0
    for fault, said in faults.outcomes(tree, drawn, int(count)):
        caught, tried = caught + bool(said), tried + 1
        memory.write_text(json.dumps({fault.key(seed): outcome for fault, outcome in tree.known.items()}))
        print(f"{fault}\n    {said or 'SURVIVES'}", flush=True)
    share = 100 * caught / max(1, tried)
    print(f"{caught} of {tried} faults caught ({share:.1f} %), {time.monotonic() - start:.0f} s")
    return 0 if share >= LEAST_PERCENT else 1


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
