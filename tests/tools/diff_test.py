"""`morvale diff` from outside: where recordings part, how far, and what counts as the same.

Environment: MORVALE_PROGRAM, the program. Needs no network.
"""
import base64
import json
import os
import pathlib
import re
import shutil
import struct
import subprocess
import tempfile
import unittest

from bundles import forget_hashes

PROGRAM = os.environ.get("MORVALE_PROGRAM", "build/release/tools/morvale/morvale")
RECORD = 288


def morvale(*arguments, **options):
    return subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, timeout=1200, **options)


def diff(*arguments, status, **options):
    """The parsed comparison; anything but the expected exit status fails here."""
    done = morvale("diff", "--format", "json", *arguments, **options)
    assert (done.returncode, done.stderr) == (status, b""), (arguments, done)
    return json.loads(done.stdout)


def record(words):
    """A record that is 0 but for {offset: value}."""
    data = bytearray(RECORD)
    for offset, value in words.items():
        struct.pack_into("<I", data, offset, value % (1 << 32))
    return bytes(data)


class InFolder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def file(self, name, *records):
        path = self.folder / name
        path.write_bytes(b"".join(records))
        return path


class Records(InFolder):
    def test_first_frame_and_field_and_the_table(self):
        a = self.file("a", record({4: 30, 36: 100}), record({4: 30, 36: 100}), record({4: 31}), record({}))
        b = self.file("b", record({4: 30, 36: 100}), record({4: 30, 36: 90, 44: 1}), record({4: 21, 36: 7}), record({}))
        found = diff(a, b, status=1)
        self.assertEqual((found["first"]["frame"], found["first"]["field"], found["first"]["offset"],
                          found["first"]["a"], found["first"]["b"]), (1, "meta[0].hsv[1]", 36, 100, 90))
        self.assertEqual([(f["field"], f["frames"], f["firstFrame"], f["largest"]) for f in found["fields"]],
                         [("humanRatio", 1, 2, 10), ("meta[0].hsv[1]", 2, 1, 10), ("meta[0].skinRatio", 1, 1, 1)])
        self.assertEqual((found["compared"], found["differing"], found["same"]), (4, 2, False))
        text = morvale("diff", a, b).stdout.decode()
        self.assertIn("first difference: frame 1, meta[0].hsv[1] at offset 36: A 100, B 90, 10 apart", text)
        self.assertIn("2 of 4 records differ", text)

    def test_tolerances(self):
        a, b = self.file("a", record({4: 30, 32: 359})), self.file("b", record({4: 31, 32: 1}))
        found = diff(a, b, "--tolerance", "meta[*].hsv[*]=2", "--tolerance", "human*=1", status=0)
        self.assertEqual((found["same"], found["tolerated"], found["fields"]), (True, 1, []))
        self.assertEqual(diff(a, b, "--tolerance", "*=1", status=1)["fields"][0]["unit"], "degrees")

    def test_a_frame_of_one_side_is_a_difference(self):
        one, three = self.file("one", record({4: 1})), self.file("three", *3 * [record({4: 1})])
        self.assertEqual(diff(one, three, status=1)["differing"], 0)
        self.assertIn("only B has frames 1 to 2\n", morvale("diff", one, three).stdout.decode())
        self.assertIn("only A has frame 1\n", morvale("diff", self.file("two", *2 * [record({})]), one).stdout.decode())
        self.assertEqual(diff("-", three, status=0, input=three.read_bytes())["compared"], 3)


class Bundles(InFolder):
    FRAMES = 4

    def bundle(self, name="a", camera="front"):
        done = morvale("scene", "--out", self.folder / name, "--size", "320x240", "--frames", self.FRAMES,
                       "--camera", camera)
        self.assertEqual(done.returncode, 0, done.stderr)
        forget_hashes(self.folder / name)
        return self.folder / name

    def copy(self, bundle, name):
        return pathlib.Path(shutil.copytree(bundle, self.folder / name))

    def poke(self, path, offset, data=b"\x5a"):
        content = bytearray(path.read_bytes())
        content[offset:offset + len(data)] = data
        path.write_bytes(content)

    def edit_line(self, bundle, frame, old, new):
        lines = (bundle / "metadata.jsonl").read_text().splitlines(keepends=True)
        self.assertIn(old, lines[frame])
        lines[frame] = lines[frame].replace(old, new)
        (bundle / "metadata.jsonl").write_text("".join(lines))

    def test_notes_say_where_inputs_and_answers_part(self):
        a = self.bundle()
        b = self.copy(a, "b")
        self.assertTrue(all(note["same"] for note in diff(a, b, status=0)["notes"]))
        self.edit_line(b, 2, '"is_udc":0', '"is_udc":1')
        self.edit_line(b, 3, '"execute":0', '"execute":-5,"network_ms":7')
        self.edit_line(b, 3, ',"logits":"logits/000003.npy"', "")
        self.poke(next(b.glob("frames/000001*")), 100)
        self.poke(b / "logits/000002.npy", 1000)
        found = diff(a, b, status=0)  # the records are what counts
        self.assertEqual({note["what"]: (note["firstFrame"], note["compared"]) for note in found["notes"]},
                         {"session": (None, 4), "inputs": (2, 3), "calls": (3, 4), "pixels": (1, 2),
                          "scores": (2, 3), "label maps": (None, 4)})
        self.assertIn("is_udc: A 0, B 1", morvale("diff", a, b).stdout.decode())
        self.assertEqual(diff("--records-only", a, b, status=0)["notes"], [])
        for line in range(self.FRAMES):
            picture = f'"nv21":"frames/{line:06d}_320x240_s320.nv21",'
            self.edit_line(b, line, picture, "")
        self.assertIn("pixels      not compared", morvale("diff", a, b).stdout.decode())

    def test_a_bundle_tells_whose_its_words_are(self):
        a = self.bundle(camera="back")
        b = self.copy(a, "b")
        word = struct.unpack_from("<I", (b / "records.bin").read_bytes(), RECORD + 104)[0]
        self.poke(b / "records.bin", RECORD + 104, struct.pack("<I", word ^ 0x80000001))
        for sides in [(a, b), (a / "records.bin", b), (a, b / "records.bin")]:
            field = diff(*sides, "--camera", "front", status=1)["fields"][0]
            self.assertEqual((field["largest"], field["unit"], field["firstFrame"]), (2, "cells", 1), sides)

    def test_report(self):
        a = self.bundle()
        b = self.copy(a, "b")
        self.poke(b / "records.bin", RECORD * 2 + 4)
        done = morvale("diff", a, b, "--report", self.folder / "page")
        if b"without the report page" in done.stderr:
            self.skipTest("built without the report page")
        self.assertEqual((done.returncode, done.stderr.count(b"\n"), b"report.html" in done.stderr), (1, 1, True))
        page = (self.folder / "page/report.html").read_text()
        data = json.loads(re.search(r'id="report-data"[^>]*>(.*?)</script>', page, re.S)[1])
        self.assertEqual(base64.b64decode(data["baseline"]["records"]), (a / "records.bin").read_bytes())
        self.assertEqual(base64.b64decode(data["records"]), (b / "records.bin").read_bytes())
        self.assertEqual(data["baseline"]["label_runs"], data["label_runs"])
        self.assertEqual((data["comparison"]["index"], data["comparison"]["field"]), (2, "humanRatio"))
        self.assertEqual(data["geometries"], [
            {"width": 320, "height": 240, "stride": 320, "padSize": 256, "netSize": 64, "shrunkWidth": 256,
             "shrunkHeight": 192, "segFactor": 48, "scaleRatio": 1.25, "notes": []}])
        self.assertEqual(len(data["pictures"]), self.FRAMES)
        self.assertEqual(data["baseline"]["camera_faces"], data["frames"]["camera_faces"])
        self.assertNotIn("pictures", data["baseline"], "the same pixels are in the page once")
        frame = next((a / "frames").glob("000001*"))
        frame.write_bytes(bytes(frame.stat().st_size))
        morvale("diff", a, b, "--report", self.folder / "page")
        page = (self.folder / "page/report.html").read_text()
        baseline = json.loads(re.search(r'id="report-data"[^>]*>(.*?)</script>', page, re.S)[1])["baseline"]
        self.assertEqual(baseline["other_pixels"][:3], [0, 1, 0])
        self.assertEqual((baseline["picture"][:3], len(baseline["pictures"])), ([None, 0, None], 1))
        done = morvale("diff", a / "records.bin", b, "--report", self.folder / "bare")
        self.assertEqual((done.returncode, done.stderr.count(b"\n"), b"report.html" in done.stderr), (1, 1, True))

    def test_unusable(self):
        a, good = self.bundle(), self.file("good", record({}))
        broken = self.copy(a, "broken")
        (broken / "logits/000002.npy").unlink()
        for arguments, fragment in [
                ([good], "B"), ([good, self.folder / "none"], "none"), ([good, self.file("empty")], "0 bytes"),
                ([good, self.file("cut", record({}), b"123")], "291 bytes"), ([good, self.folder], "session.json"),
                ([a, broken], "frame 2"), ([good, good, "--tolerance", "luma=1"], "luma"),
                ([good, good, "--camera", "side"], "--camera"),
                ([good, good, "--report", ""], "--report")]:
            with self.subTest(arguments=arguments):
                done = morvale("diff", *arguments)
                self.assertEqual((done.returncode, done.stdout), (2, b""), done.stderr)
                self.assertRegex(done.stderr.decode(), r"\Amorvale: [^\n]+\.\n\Z")
                self.assertIn(fragment, done.stderr.decode())


if __name__ == "__main__":
    unittest.main()
