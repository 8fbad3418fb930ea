"""`morvale ab` from outside: two builds of the library over recordings.

Environment: MORVALE_PROGRAM, the program; MORVALE_LIBRARY, the library; MORVALE_CHANGED_LIBRARY_FILE, one whose records
tell 5 points more people. Needs no network.
"""
import csv
import io
import json
import os
import pathlib
import re
import signal
import subprocess
import tempfile
import time
import unittest

PROGRAM = os.environ.get("MORVALE_PROGRAM", "build/release/tools/morvale/morvale")
LIBRARY = os.environ["MORVALE_LIBRARY"]
CHANGED = os.environ["MORVALE_CHANGED_LIBRARY_FILE"]


class Ab(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.shared = tempfile.TemporaryDirectory()
        cls.recordings = []
        for name, camera in (("front", "front"), ("back", "back")):
            folder = pathlib.Path(cls.shared.name) / name
            subprocess.run([PROGRAM, "scene", "--out", folder, "--camera", camera, "--frames", "4", "--size", "320x240"],
                           check=True, capture_output=True)
            cls.recordings.append(str(folder))
        packed = pathlib.Path(cls.shared.name) / "packed.morvale"
        subprocess.run([PROGRAM, "pack", cls.recordings[0], packed], check=True, capture_output=True)
        cls.recordings.append(str(packed))

    @classmethod
    def tearDownClass(cls):
        cls.shared.cleanup()

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def ab(self, *arguments, old=LIBRARY, new=LIBRARY, status=0, **more):
        done = subprocess.run([PROGRAM, "ab", "--old", old, "--new", new, *map(str, arguments)], capture_output=True,
                              text=True, timeout=600, env={**os.environ, **more})
        self.assertEqual(done.returncode, status, done)
        return done

    def merge(self, *arguments, status=0):
        done = subprocess.run([PROGRAM, "ab", "--merge", *map(str, arguments)], capture_output=True, text=True, timeout=600)
        self.assertEqual(done.returncode, status, done)
        return done

    def test_one_library_twice(self):
        done = self.ab(*self.recordings, "--jobs", "2")
        self.assertIn("3 recordings: 3 the same, 0 changed, 0 failed.", done.stderr)
        self.assertEqual([line.split()[0] for line in done.stdout.splitlines()], ["verdict", "same", "same", "same"])

    def test_a_change_is_named(self):
        done = subprocess.run([PROGRAM, "ab", "--old", LIBRARY, "--new", CHANGED, "--report", self.folder / "out",
                               *self.recordings], capture_output=True, text=True, timeout=600)
        if "without the report page" in done.stderr:
            self.skipTest("built without the report page")
        self.assertEqual(done.returncode, 1, done)
        self.assertEqual(len(re.findall(r"^changed +4 +4  0 humanRatio ", done.stdout, re.M)), 3)
        self.assertRegex(done.stdout, r"\nhumanRatio +3 +12  5\n")
        page = (self.folder / "out/index.html").read_text()
        links = re.findall(r'<a href="(.*?)">', page)
        self.assertEqual(len(links), 3)
        for link in links:
            self.assertIn('id="report-data"', (self.folder / "out" / link).read_text())
        self.assertIn('"cells":[[0,4]]', page)
        self.ab(*self.recordings, "--tolerance", "humanRatio=5", new=CHANGED)
        rows = list(csv.DictReader(io.StringIO(
            self.ab(self.recordings[0], "--format", "csv", new=CHANGED, status=1).stdout)))
        self.assertEqual([(row["field"], row["field_frames"], row["largest"]) for row in rows], [("humanRatio", "4", "5")])

    def test_what_does_not_replay_is_a_failure_of_its_own(self):
        records = pathlib.Path(self.recordings[0]) / "records.bin"
        done = self.ab("nothing", records, self.recordings[0], new=CHANGED, status=1, MORVALE_CHANGED_LIBRARY="ends")
        lines = done.stdout.splitlines()[1:4]
        self.assertIn("nothing cannot be read", lines[0])
        self.assertIn("no frames to replay", lines[1])
        self.assertIn(f"new: ended by signal {int(signal.SIGABRT)}", lines[2])
        self.assertIn("3 recordings: 0 the same, 0 changed, 3 failed.", done.stderr)

    def test_it_goes_on_where_it_stopped_and_shards_are_joined(self):
        one, two = self.folder / "one.jsonl", self.folder / "two.jsonl"
        self.ab(self.recordings[0], "--results", one, new=CHANGED, status=1)
        whole = one.read_text()
        one.write_text(whole + '{"recording": "cut')  # killed while it wrote
        done = self.ab(*self.recordings[:2], "--results", one, new=CHANGED, status=1)
        self.assertIn("1 of the verdicts are taken up", done.stderr)
        lines = [json.loads(line) for line in one.read_text().splitlines()]
        self.assertEqual([line.get("recording") for line in lines], [None, *self.recordings[:2]])
        self.ab(self.recordings[2], self.recordings[0], "--results", two, new=CHANGED, status=1)
        done = self.merge(one, two, status=1)
        self.assertIn("3 recordings: 0 the same, 3 changed, 0 failed.", done.stderr)
        done = self.ab(self.recordings[0], "--results", one, status=2)
        self.assertIn("holds results of other libraries", done.stderr)

    def test_ctrl_c_keeps_the_verdicts(self):
        results = self.folder / "results.jsonl"
        running = subprocess.Popen([PROGRAM, "ab", "--old", LIBRARY, "--new", LIBRARY, "--results", results,
                                    *(self.recordings[1:] + [str(self.folder / str(i)) for i in range(20000)])],
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        while not results.exists() or results.read_text().count("\n") < 3:
            self.assertIsNone(running.poll())
            time.sleep(0.01)
        running.send_signal(signal.SIGINT)
        self.assertEqual(running.wait(60), 130)
        self.assertTrue(results.read_text().endswith("}\n"))

    def test_what_cannot_be_used(self):
        other = self.folder / "other"
        other.write_text("{}\n")
        apart = self.folder / "sp ace.so"  # where the loader's list would end, and the program's own library be taken
        apart.symlink_to(LIBRARY)
        for arguments, words in [
                ((self.recordings[0], "--new", "/etc/passwd"), "cannot be used"),
                ((self.recordings[0], "--new", "nothing.so"), "nothing.so cannot be read"),
                ((self.recordings[0], "--new", apart), "without blanks and colons"),
                ((self.recordings[0], "--results", self.folder), "cannot be read as a file"),
                ((self.recordings[0], "--tolerance", "human=1"), "no field is called"),
                ((self.recordings[0], "--results", other), "is no file of results")]:
            new = [] if "--new" in arguments else ["--new", LIBRARY]
            done = subprocess.run([PROGRAM, "ab", "--old", LIBRARY, *new, *map(str, arguments)], capture_output=True,
                                  text=True, timeout=600)
            self.assertEqual(done.returncode, 2, done)
            self.assertIn(words, done.stderr)
        self.assertEqual(other.read_text(), "{}\n", "a file of something else stays as it is")
        self.assertIn("two libraries are compared", subprocess.run(
            [PROGRAM, "ab", self.recordings[0]], capture_output=True, text=True, timeout=600).stderr)


if __name__ == "__main__":
    unittest.main()
