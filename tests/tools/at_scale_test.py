"""The commands of docs/at-scale.md, as they stand there, over made-up recordings of which one is damaged.

Environment: MORVALE_PROGRAM, the program; MORVALE_LIBRARY and MORVALE_CHANGED_LIBRARY_FILE, the library and one whose
records differ. Needs GNU Parallel and Slurm; skipped without, unless MORVALE_REQUIRE_NETWORK=1.
"""
import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

import slurm
from bundles import forget_hashes

PROGRAM = pathlib.Path(os.environ.get("MORVALE_PROGRAM", "build/release/tools/morvale/morvale"))
PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs/at-scale.md"


class AtScale(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.environment = dict(os.environ, PATH=f"{PROGRAM.parent}:{os.environ['PATH']}", HOME=folder.name)
        for seed, name in enumerate(["phone/session-0001", "phone/session-0002", "phone/session-0003",
                                     "tablet/session-0001"]):
            self.shell(f"morvale scene --out recordings/{name} --seed {seed} --frames 3 --size 160x120")
        self.blocks = re.findall(r"```sh\n(.*?)```", PAGE.read_text(), re.DOTALL)

    def shell(self, script, **more):
        done = subprocess.run(["bash", "-c", script], cwd=self.folder, env={**self.environment, **more},
                              capture_output=True, text=True, timeout=1200)
        return done.returncode, done.stdout, done.stderr

    def damage(self, offset):
        path = self.folder / "recordings/phone/session-0002/records.bin"
        forget_hashes(path.parent)
        records = bytearray(path.read_bytes())
        records[offset] ^= 1
        path.write_bytes(records)

    def test_jobs(self):
        self.assertEqual(self.shell(self.blocks[0])[0], 0)
        index = (self.folder / "reports/index.html").read_text()
        self.assertEqual(index.count('href="./phone/session-000'), 3)
        self.assertTrue((self.folder / "reports/tablet/session-0001/report.html").exists())

    def test_parallel(self):
        self.needs("" if shutil.which("parallel") else "parallel")
        self.damage(288 + 4)
        replay, again = self.blocks[1:3]
        self.assertEqual(self.shell(replay)[0], 1)
        lines = [json.loads(line) for path in self.folder.glob("lines/*/*.jsonl")
                 for line in path.read_text().splitlines()]
        self.assertEqual(len(lines), 12)
        self.assertEqual(len(list(self.folder.glob("reports/*/*/report.html"))), 4)
        self.assertIn("frame 1: humanRatio", (self.folder / "lines/phone/session-0002.jsonl.err").read_text())
        self.damage(288 + 4)  # whole again
        status, listed, _ = self.shell(again)
        self.assertEqual((status, listed.split()), (0, ["1", "recordings/phone/session-0002"]))
        self.assertIn("all records as recorded", (self.folder / "lines/phone/session-0002.jsonl.err").read_text())
        self.assertEqual(self.shell(again.splitlines()[0])[1], "", "nothing is left to do")

    def needs(self, missing):
        if missing:
            self.assertFalse(os.environ.get("MORVALE_REQUIRE_NETWORK"), f"missing: {missing}")
            self.skipTest(f"needs {missing}")

    def libraries(self):
        for side, name in (("old", "MORVALE_LIBRARY"), ("new", "MORVALE_CHANGED_LIBRARY_FILE")):
            (self.folder / side).mkdir()
            (self.folder / side / "libmorvale_capture.so").symlink_to(os.environ[name])

    def changed_fields(self):
        return [row.split(",")[6] for row in (self.folder / "all.csv").read_text().splitlines()[1:]]

    def test_slurm(self):
        self.needs(slurm.missing())
        self.libraries()
        with slurm.Loopback(self.folder / "slurm") as cluster:
            def array(block):
                (self.folder / "task.sbatch").write_text(block)
                return self.shell("mkdir -p lines; sbatch --wait --array=1-4 task.sbatch", **cluster.environment)
            self.shell(self.blocks[1].splitlines()[0])
            self.assertEqual(array(self.blocks[3])[0], 0)
            self.assertEqual(len((self.folder / "lines/phone/session-0003.jsonl").read_text().splitlines()), 3)
            self.assertTrue((self.folder / "reports/phone/session-0003/report.html").exists())
            self.shell(self.blocks[5].splitlines()[0])
            self.assertEqual(array(self.blocks[6])[0], 1)
        self.assertEqual(self.shell(self.blocks[5].splitlines()[-1])[0], 1)
        self.assertEqual(self.changed_fields(), ["humanRatio"] * 4)

    def test_two_builds_over_shards(self):
        self.libraries()
        alone, shards = self.blocks[4:6]
        status, _, words = self.shell(alone)
        self.assertEqual((status, words.count("4 recordings: 0 the same, 4 changed, 0 failed.")), (1, 1), words)
        self.assertTrue((self.folder / "ab_report/index.html").exists())
        self.needs("" if shutil.which("parallel") else "parallel")
        self.assertEqual(self.shell(shards)[0], 1)
        self.assertEqual(self.changed_fields(), ["humanRatio"] * 4)


if __name__ == "__main__":
    unittest.main()
