"""What the program writes into a report, from outside: the data in report.html and how large the page becomes. How the
page shows it is tried in a browser (tests/tools/report).

Environment: MORVALE_PROGRAM, the program.
"""
import json
import os
import pathlib
import random
import re
import subprocess
import tempfile
import unittest

PROGRAM = os.environ.get("MORVALE_PROGRAM", "build/release/tools/morvale/morvale")


def morvale(*arguments):
    return subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, timeout=1200)


class Reports(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def report(self, *arguments, status=0):
        """The data of the page that a replay writes, and the page's size."""
        done = morvale("replay", "--format", "none", "--report", self.folder / "report", *arguments)
        if b"without the report page" in done.stderr:
            self.skipTest("built without the report page")
        self.assertEqual(done.returncode, status, done.stderr)
        html = (self.folder / "report/report.html").read_bytes()
        return json.loads(re.search(rb'id="report-data"[^>]*>(.*?)</script>', html, re.S)[1]), len(html)

    def test_a_long_run_keeps_within_12_megabytes(self):
        noise = random.Random(1)
        (self.folder / "noise.ppm").write_bytes(b"P6 112 80 255\n" + noise.randbytes(112 * 80 * 3))
        data, size = self.report("--engine", "fixed", "--faces", "none", "--repeat", 3600, "--debug-level", 1,
                                 self.folder / "noise.ppm")
        self.assertEqual(len(data["frames"]["number"]), 3600)
        self.assertLessEqual(size, 12_000_000)
        pictures = data["frames"]["picture"]
        self.assertEqual([place for place in pictures if place is not None], list(range(len(data["pictures"]))))
        kept = [frame for frame, place in enumerate(pictures) if place is not None]
        self.assertGreater(len(kept), 200)
        self.assertEqual(len({b - a for a, b in zip(kept, kept[1:])}), 1, "evenly over the run")


if __name__ == "__main__":
    unittest.main()
