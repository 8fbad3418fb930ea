"""The commands of docs/at-scale.md, as they stand there, over made-up recordings of which one is damaged.

Environment: MORVALE_PROGRAM, the program. Needs GNU Parallel; skipped without, unless MORVALE_REQUIRE_NETWORK=1.
"""
import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

from bundles import forget_hashes

PROGRAM = pathlib.Path(os.environ.get("MORVALE_PROGRAM", "build/tools/morvale/morvale"))
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

    def test_parallel(self):
        if not shutil.which("parallel"):
            self.assertFalse(os.environ.get("MORVALE_REQUIRE_NETWORK"), "GNU Parallel is missing")
            self.skipTest("needs GNU Parallel")
        self.damage(288 + 4)
        replay, again = self.blocks[:2]
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

    def test_slurm_task(self):
        self.shell(self.blocks[0].splitlines()[0] + "; mkdir lines")
        self.assertEqual(self.shell(self.blocks[2], SLURM_ARRAY_TASK_ID="3")[0], 0)
        self.assertEqual(len((self.folder / "lines/phone/session-0003.jsonl").read_text().splitlines()), 3)
        self.assertTrue((self.folder / "reports/phone/session-0003/report.html").exists())

    def test_two_builds_over_shards(self):
        libraries = os.environ["MORVALE_LIBRARY"], os.environ["MORVALE_CHANGED_LIBRARY_FILE"]
        for side, library in zip(("old", "new"), libraries):
            (self.folder / side).mkdir()
            (self.folder / side / "libmorvale_capture.so").symlink_to(library)
        alone, shards = self.blocks[3:5]
        status, _, words = self.shell(alone)
        self.assertEqual((status, words.count("4 recordings: 0 the same, 4 changed, 0 failed.")), (1, 1), words)
        self.assertTrue((self.folder / "ab_report/index.html").exists())
        if not shutil.which("parallel"):
            self.skipTest("needs GNU Parallel")
        self.assertEqual(self.shell(shards)[0], 1)
        rows = (self.folder / "all.csv").read_text().splitlines()
        self.assertEqual([row.split(",")[6] for row in rows[1:]], ["humanRatio"] * 4)


if __name__ == "__main__":
    unittest.main()
