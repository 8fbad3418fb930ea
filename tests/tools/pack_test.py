"""`morvale pack` from outside: what is kept replays, reports and compares as the whole recording does.

Environment: MORVALE_PROGRAM, the program. Needs no network.
"""
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import time
import unittest

PROGRAM = os.environ.get("MORVALE_PROGRAM", "build/release/tools/morvale/morvale")
SIZES = ["4000x3000", "1920x1080", "640x480", "480x640", "642x482", "320x240"]  # the fifth is no ratio of a model's


def morvale(*arguments, status=0, **options):
    done = subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, text=True, timeout=1200, **options)
    assert done.returncode == status, (arguments, done)
    return done


def report_data(folder):
    """A report's data without its pictures and names, and without times, which the log tells too."""
    page = (folder / "report.html").read_text()
    data = json.loads(re.search(r'id="report-data"[^>]*>(.*?)</script>', page, re.S)[1])

    def without(value):
        if isinstance(value, dict):
            return {key: without(child) for key, child in value.items()
                    if key not in ("pictures", "command", "title", "source", "log_lines") and not key.endswith("_ms")}
        return value
    return without(data)


class Pack(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def scene(self, *flags, frames=3):
        shutil.rmtree(self.folder / "scene", ignore_errors=True)
        morvale("scene", "--out", self.folder / "scene", "--frames", frames, *flags)
        return self.folder / "scene"

    def packed(self, scene, *flags):
        path = self.folder / "scene.morvale"
        path.unlink(missing_ok=True)
        morvale("pack", *flags, scene, path)
        return path

    def test_a_thin_recording_is_as_good_as_the_whole_one(self):
        for camera in "front", "back":
            for size in SIZES:
                with self.subTest(camera=camera, size=size):
                    scene = self.scene("--camera", camera, "--size", size, frames=2)
                    thin = self.packed(scene)
                    lines = [re.sub(r'"input":"[^"]*"', "", morvale("replay", path).stdout) for path in (scene, thin)]
                    self.assertEqual(*lines)
                    self.assertIn("all records as recorded", morvale("replay", "--format", "none", thin).stderr)
                    shown = json.loads(morvale("diff", "--format", "json", scene, thin).stdout)
                    self.assertTrue(all(note["same"] and note["compared"] == 2 for note in shown["notes"]), shown)

    def test_reports_differ_in_sharpness_alone(self):
        for camera, size in zip(["front", "back"] * len(SIZES), SIZES + SIZES[::-1]):
            with self.subTest(camera=camera, size=size):
                scene = self.scene("--camera", camera, "--size", size, frames=2)
                done = subprocess.run([PROGRAM, "replay", "--format", "none", "--report", self.folder / "whole", scene],
                                      capture_output=True, text=True)
                if "without the report page" in done.stderr:
                    self.skipTest("built without the report page")
                thin = self.packed(scene)
                morvale("replay", "--format", "none", "--report", self.folder / "thin", thin)
                self.assertEqual(report_data(self.folder / "whole"), report_data(self.folder / "thin"))

    def test_what_the_file_holds(self):
        scene = self.scene("--size", "640x480")
        listed = subprocess.run(["tar", "-tf", self.packed(scene, "--preview")], capture_output=True, text=True).stdout
        self.assertEqual(len(re.findall(r"previews/\d{6}\.jpg\n", listed)), 3)
        self.assertIn("frames/000000_640x480_s640.thin.zst\n", listed)
        whole = self.packed(scene, "--whole")
        shown = json.loads(morvale("diff", "--format", "json", scene, whole).stdout)
        self.assertTrue(all(note["same"] for note in shown["notes"]))
        self.assertEqual(morvale("inspect", "--verify", whole).stdout, f"{whole}: 3 frames, all as recorded.\n")
        again = self.folder / "again.morvale"
        morvale("replay", "--format", "none", "--record", again, whole)
        self.assertIn("all records as recorded", morvale("replay", "--format", "none", again).stderr)

    def test_complaints(self):
        scene = self.scene("--size", "320x240")
        thin = self.packed(scene)
        for arguments, fragment in [(["pack", scene, self.folder / "out"], "ends in .morvale"),
                                    (["pack", scene, thin], "exists already"),
                                    (["pack", self.folder / "none", self.folder / "a.morvale"], "session.json"),
                                    (["replay", "--camera", "back", thin], "replay the whole recording")]:
            done = morvale(*arguments, status=2)
            self.assertRegex(done.stderr, r"\Amorvale: [^\n]+\.\n\Z")
            self.assertIn(fragment, done.stderr)
        self.assertEqual(sorted(path.name for path in self.folder.iterdir()), ["scene", "scene.morvale"])

    def test_one_that_is_stopped_leaves_nothing(self):
        scene = self.scene("--size", "1920x1080", frames=40)
        for sent in signal.SIGINT, signal.SIGTERM:
            with subprocess.Popen([PROGRAM, "pack", "--whole", scene, self.folder / "a.morvale"],
                                  stderr=subprocess.PIPE, text=True) as process:
                while not list(self.folder.glob("a.morvale.part*")):
                    time.sleep(0.01)
                process.send_signal(sent)
                self.assertIn("nothing of it is left", process.communicate(timeout=60)[1])
                self.assertEqual(process.returncode, 130)
            self.assertEqual([path.name for path in self.folder.iterdir()], ["scene"])


if __name__ == "__main__":
    unittest.main()
