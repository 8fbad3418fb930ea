"""`morvale analyze` from outside: its complaints, its data stream, two photographs through the real network.

Environment: MORVALE_PROGRAM, the program; MORVALE_MODEL_DIR and MORVALE_PHOTO_DIR, the network and the
photographs. Without those two the tests that need them are skipped, or fail if MORVALE_REQUIRE_NETWORK is 1.
"""
import itertools
import json
import os
import pathlib
import random
import re
import struct
import subprocess
import sys
import tempfile
import unittest
import urllib.parse
import zlib

PROGRAM = os.environ.get("MORVALE_PROGRAM", "build/release/tools/morvale/morvale")
MODELS = pathlib.Path(os.environ.get("MORVALE_MODEL_DIR", "~/.cache/morvale/network")).expanduser()
PHOTOS = pathlib.Path(os.environ.get("MORVALE_PHOTO_DIR", "~/.cache/morvale/photos")).expanduser()
HOPPER, ASTRONAUT = PHOTOS / "grace_hopper_512x512.jpg", PHOTOS / "astronaut.png"


def analyze(*arguments, **environment):
    return subprocess.run([PROGRAM, "analyze", *map(str, arguments)], capture_output=True, text=True,
                          env={**os.environ, "VEXA_MODEL_DIR": str(MODELS), **environment}, timeout=1200)


def grey_png(width, height):
    """A PNG file of one grey."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    rows = (b"\0" + b"\x80" * width) * height
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def png_rows(data):
    """The rows of an RGB PNG file as OpenCV writes it: three bytes a pixel, each told from the one to its left."""
    width, height = struct.unpack(">II", data[16:24])
    packed, at = b"", 8
    while at < len(data):
        length, = struct.unpack(">I", data[at:at + 4])
        if data[at + 4:at + 8] == b"IDAT":
            packed += data[at + 8:at + 8 + length]
        at += 12 + length
    raw, rows = zlib.decompress(packed), []
    for y in range(height):
        line = raw[y * (3 * width + 1):(y + 1) * (3 * width + 1)]
        assert line[0] == 1, "the filter that takes the difference to the left"
        row = bytearray(3 * width)
        for channel in range(3):
            row[channel::3] = bytes(sum_ & 255 for sum_ in itertools.accumulate(line[1 + channel::3]))
        rows.append(bytes(row))
    return rows


def overlap(a, b):
    """Intersection over union of two boxes."""
    w = min(a["x"] + a["w"], b["x"] + b["w"]) - max(a["x"], b["x"])
    h = min(a["y"] + a["h"], b["y"] + b["h"]) - max(a["y"], b["y"])
    shared = max(w, 0) * max(h, 0)
    return shared / (a["w"] * a["h"] + b["w"] * b["h"] - shared)


class InFolder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def file(self, name, content=b""):
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path


class Complaints(InFolder):
    """Every mistake: exit status 2, one sentence, no data, no picture."""

    def assert_refused(self, arguments, *fragments, status=2, **environment):
        out = self.folder / "out"
        done = analyze("--out", out, *arguments, **environment)
        self.assertEqual((done.returncode, done.stdout), (status, ""), (arguments, done.stderr))
        self.assertRegex(done.stderr, r"\Amorvale: [^\n]+\.\n\Z")
        for fragment in fragments:
            self.assertIn(str(fragment), done.stderr)
        self.assertFalse(out.exists(), f"{arguments}: left {out}")

    def test_flags(self):
        picture = self.file("grey.png", grey_png(64, 64))
        self.assert_refused([], "INPUT")
        for flags, fragment in [(["--sharpen"], "--sharpen"), (["--camera", "side"], "--camera"),
                                (["--repeat", "0"], "--repeat"), (["--repeat", "many"], "--repeat"),
                                (["--format", "xml"], "--format"), (["--size", "640"], "640"),
                                (["--size", "641x480"], "even"), (["--size", "-2x2"], "-2x2"),
                                (["--size", "99999999999x2"], "--size"), (["--crop", "5:4"], "--crop"),
                                (["--size", "6x4", "--crop", "4:3"], "only 6x4"), (["--stride", "62"], "stride 62"),
                                (["--cascade", "/none.xml"], "/none.xml"),
                                (["--model-dir", "/none"], "./dev network")]:
            with self.subTest(flags=flags):
                self.assert_refused([*flags, picture], fragment)

    def test_the_second_input_is_checked_before_the_first_is_analysed(self):
        good = self.file("grey.png", grey_png(64, 64))
        self.assert_refused([good, self.folder / "missing.jpg"], "missing.jpg")
        self.assert_refused([good, self.folder], "is a folder", "morvale replay")
        self.assert_refused([good, self.file("clip.mp4", "a film")], "clip.mp4", "morvale replay")
        self.assert_refused([good, self.file("note.jpg", "no picture")], "note.jpg")
        self.assert_refused([good, self.file("grey.jpg", grey_png(64, 64))], "same picture")

    def test_with_keep_going_one_bad_input_does_not_end_a_batch(self):
        good, note = self.file("grey.png", grey_png(64, 64)), self.file("note.jpg", "no picture")
        cut, odd = self.file("cut.png", grey_png(64, 64)[:40]), self.file("\x1b[31m.jpg", "no picture")
        done = subprocess.run([PROGRAM, "analyze", "--keep-going", "--faces", "none", note, cut, odd, good], capture_output=True,
                              timeout=1200, env={**os.environ, "VEXA_ENGINE": "fixed"})
        self.assertEqual(done.returncode, 2, done.stderr)
        self.assertEqual([json.loads(line)["input"] for line in done.stdout.splitlines()], [str(good)])
        self.assertIn(b"3 of 4 inputs could not be read: %s, %s, " % (os.fsencode(note), os.fsencode(cut)), done.stderr)
        self.assertIn(b"\\x1b[31m.jpg: not a picture", done.stderr)
        self.assertNotIn(b"\x1b", done.stderr)

    def test_damaged_picture(self):
        self.assert_refused(["--faces", "none", self.file("cut.png", grey_png(64, 64)[:40])], "decoded")

    def test_raw_frames_state_the_bytes_they_need(self):
        cut = b"\0" * 95
        for name, flags, fragments in [
                ("a_8x4.nv21", [], ["48", "95"]), ("b_8x4_s16.nv21", [], ["8x4", "stride 16", "96", "95"]),
                ("8x4_s16.nv21", [], ["96"]), ("c_s16.nv21", [], ["unknown", "--size"]),
                ("take28x4.nv21", [], ["unknown"]), ("d_7x4.nv21", [], ["even"]),
                ("e_8x4_s6.nv21", [], ["stride 6", "width 8"]), ("f.nv21", ["--size", "8x4"], ["48"]),
                ("g_8x4_s16.nv21", ["--stride", "32"], ["192"]),
                ("h_8x4_s16.nv21", ["--size", "16x8"], ["16x8", "stride 16", "192"])]:
            with self.subTest(name=name, flags=flags):
                self.assert_refused([*flags, self.file(name, cut)], name, *fragments)

    def test_faces_files_are_read_strictly(self):
        picture = self.file("grey.png", grey_png(64, 64))
        face = '{"x": 1, "y": 2, "w": 3, "h": 4}'
        for text in ["", "[", "7", f"[{face}" + f", {face}" * 5 + "]", '[{"x": 1, "y": 2, "w": 3}]',
                     '[{"x": 1, "y": 2, "w": 3, "height": 4}]', '[{"x": 1.5, "y": 2, "w": 3, "h": 4}]',
                     '[{"x": 1, "y": 2, "w": 0, "h": 4}]', '[{"x": 3000000000, "y": 2, "w": 1, "h": 4}]',
                     f'{{"other.png": [{face}]}}', f'{{"grey.png": {face}}}']:
            with self.subTest(text=text):
                self.assert_refused(["--faces", self.file("faces.json", text), picture], "faces.json")
        self.assert_refused(["--faces", self.folder / "none.json", picture], "none.json")

    def test_without_a_network(self):
        picture = self.file("grey.png", grey_png(64, 64))
        self.assert_refused([picture], "./dev network", status=1, VEXA_MODEL_DIR=str(self.folder))

    def test_program(self):
        def morvale(*arguments):
            done = subprocess.run([PROGRAM, *arguments], capture_output=True, text=True)
            return done.returncode, done.stdout, done.stderr
        self.assertRegex(morvale("--version")[1], r"\Amorvale \d+\.\d+\.\d+\nlibrary \d+\.\d+\.\d+, commit \S+, (GCC|clang) .*, kernels portable\b.*\n\Z")
        self.assertIn("analyze", morvale("--help")[1])
        self.assertIn("Examples:", morvale("analyze", "--help")[1])
        for arguments in [(), ("analyse",)]:
            status, out, err = morvale(*arguments)
            self.assertEqual((status, out, err.count("\n")), (2, "", 1))


class Pictures(InFolder):
    """Made-up people, whose own scores answer for the network."""

    def people(self, *flags):
        """A scene's first frame, and how to analyse it."""
        scene = self.folder / "scene"
        subprocess.run([PROGRAM, "scene", "--out", scene, "--frames", "1", *flags], check=True, capture_output=True)
        frame, = (scene / "frames").iterdir()
        return frame, {"VEXA_ENGINE": "recorded", "VEXA_BUNDLE": str(scene)}

    def test_the_picture_of_three_faces_is_whole(self):
        frame, engine = self.people("--people", "3")
        done = analyze("--faces", "none", "--out", self.folder / "out", frame, **engine)
        self.assertEqual(json.loads(done.stdout)["measuredFaces"], 3)
        png, = (self.folder / "out").iterdir()
        rows = png_rows(png.read_bytes())
        paper = rows[0][:3]
        self.assertEqual([y for y in range(len(rows) - 20, len(rows)) if rows[y].strip(paper)], [],
                         "figures reach into the lower margin")


    def test_people_are_numbered_from_left_to_right(self):
        frame, engine = self.people("--people", "3", "--seed", "5", "--motion", "walk")
        done = analyze("--faces", "none", "--out", self.folder / "out", frame, **engine)
        boxes = json.loads(done.stdout)["personBoxes"]
        self.assertNotEqual([box["x"] for box in boxes], sorted(box["x"] for box in boxes), "the record goes by size")
        rows = png_rows(next((self.folder / "out").iterdir()).read_bytes())
        picture_end = 3 * (28 + 760)
        for colour, box in zip(["e5532d", "3b7de0", "9a5fe0"], sorted(boxes, key=lambda box: box["x"])):
            row = rows[72 + round(box["y"] * 760 / 640) + 9]
            tag = row[:picture_end].find(bytes.fromhex(colour)) / 3
            self.assertAlmostEqual(tag, 28 + box["x"] * 760 / 640, delta=4, msg=colour)
            self.assertTrue(any(row.find(bytes.fromhex(colour), picture_end) > 0 for row in rows), "in the panel too")

    def test_a_shape_that_misleads_is_told(self):
        for camera, size, words in [("front", (640, 512), "fills 51 rows .* analyses 28. The lowest 45 % "),
                                    ("back", (640, 512), "fills 26 rows .* analyses 15. The lowest 41 % "),
                                    ("front", (900, 300), "fills 21 rows .* analyses 28. The rows below .* mirror"),
                                    ("front", (480, 854), "boxes by 1.88 .width / 256.* by 3.34. .*left of and above"),
                                    ("back", (480, 854), "across by 3.75 .width / 128.* by 6.67. .*left of the person"),
                                    ("front", (640, 480), None), ("back", (640, 360), None),
                                    ("front", (512, 512), None)]:
            with self.subTest(camera=camera, size=size):
                picture = self.file("grey.png", grey_png(*size))
                flags = ["--camera", camera, "--faces", "none", "--repeat", "2", picture]
                frames = [json.loads(line) for line in analyze(*flags, VEXA_ENGINE="fixed").stdout.splitlines()]
                table = analyze("--format", "table", *flags, VEXA_ENGINE="fixed").stdout
                if words is None:
                    self.assertTrue("notes" not in frames[0] and "note" not in table)
                    continue
                self.assertRegex(frames[0]["notes"][0], words)
                self.assertIn("--crop 4:3", frames[0]["notes"][0])
                self.assertEqual(table.count("  note: " + frames[0]["notes"][0]), 1, "once for an input")

    def test_crop_cuts_the_largest_part_of_the_shape_out(self):
        noise = random.Random(5)
        for shape, size, left, top, part in [("4:3", (40, 54), 0, 8, (40, 30)), ("16:9", (70, 50), 2, 4, (64, 36))]:
            with self.subTest(shape=shape):
                width, height = size
                stride = width + 6
                planes = noise.randbytes(stride * height * 3 // 2)
                frame = self.file(f"noise_{width}x{height}_s{stride}.nv21", planes)
                flags = ["--crop", shape, "--faces", "none", frame]
                record, = map(json.loads, analyze(*flags, VEXA_ENGINE="fixed").stdout.splitlines())
                self.assertEqual((record["geometry"]["width"], record["geometry"]["height"]), part)
                self.assertNotIn("notes", record)
                kept = self.folder / shape
                subprocess.run([PROGRAM, "replay", "--engine", "fixed", "--format", "none", "--record", kept, *flags],
                               check=True, capture_output=True)
                rows = [planes[y * stride + left:y * stride + left + part[0]]
                        for y in [*range(top, top + part[1]), *range(height + top // 2, height + (top + part[1]) // 2)]]
                self.assertEqual((kept / f"frames/000000_{part[0]}x{part[1]}_s{part[0]}.nv21").read_bytes(),
                                 b"".join(rows))
        done = subprocess.run([PROGRAM, "replay", "--crop", "4:3", kept], capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertRegex(done.stderr, r"\Amorvale: --crop: .* is a recording[^\n]+\.\n\Z")

    def test_rows_that_are_not_analysed_are_hatched(self):
        analyze("--faces", "none", "--out", self.folder / "out", self.file("grey.png", grey_png(640, 512)),
                VEXA_ENGINE="fixed")
        rows = png_rows((self.folder / "out/grey_front.png").read_bytes())
        # The picture begins at row 72 and is drawn at 760 / 640: 28 of 51.25 rows end at row 404.
        grey = [y for y in range(80, 670) if abs(rows[y][3 * 40] - 128) < 4]
        self.assertEqual(grey[:300], list(range(80, 380)))
        self.assertTrue(400 <= grey[-1] <= 406, grey[-1])


class WithNetwork(InFolder):
    def setUp(self):
        super().setUp()
        missing = [str(path) for path in [HOPPER, ASTRONAUT] if not path.exists()]
        if not any(MODELS.glob("*.onnx")):
            missing.append(f"{MODELS}/*.onnx")
        if missing and os.environ.get("MORVALE_REQUIRE_NETWORK") == "1":
            self.fail(f"missing: {missing}")
        if missing:
            print(f"\nNOT TESTED, missing: {', '.join(missing)}", file=sys.stderr)
            self.skipTest(f"missing: {missing}")

    def frames(self, *arguments):
        """The parsed lines; anything on standard output that is not JSON fails here."""
        done = analyze(*arguments)
        self.assertEqual(done.returncode, 0, done.stderr)
        return [json.loads(line) for line in done.stdout.splitlines()]

    def test_front_measures_the_one_face(self):
        for frame in self.frames(HOPPER, ASTRONAUT):
            with self.subTest(frame["input"]):
                record = frame["record"]
                self.assertEqual((record["ver"], frame["measuredFaces"], frame["process"]), (1, 1, 0))
                self.assertTrue(record["meta"][0]["skinRatio"] > 0)
                for meta in record["meta"][1:]:
                    self.assertFalse(any(any(v) if isinstance(v, list) else v for v in meta.values()))
                self.assertGreaterEqual(overlap(frame["personBoxes"][0], frame["cameraFaces"][0]), 0.4)

    def test_back_finds_the_head(self):
        for frame in self.frames("--camera", "back", HOPPER, ASTRONAUT):
            with self.subTest(frame["input"]):
                face, box, geometry = frame["cameraFaces"][0], frame["personBox"], frame["geometry"]
                self.assertEqual((frame["record"]["ver"], frame["personCount"]), (5, 1))
                self.assertEqual(box, frame["personBoxes"][0])
                self.assertGreaterEqual(overlap(box, face), 0.3)
                self.assertTrue(10 <= frame["record"]["humanRatio"] <= 80)
                centres = [((x + 0.5) * geometry["width"] / 19, (y + 0.5) * geometry["height"] / 15)
                           for y, row in enumerate(frame["grid"])
                           for x, cell in enumerate(row) if cell == "1"]
                # A head is the face and as much again of hair on every side.
                on_head = [abs(x - face["x"] - face["w"] / 2) <= face["w"] and
                           abs(y - face["y"] - face["h"] / 2) <= face["h"] for x, y in centres]
                self.assertGreaterEqual(len(centres), 4)
                self.assertGreaterEqual(sum(on_head), 0.8 * len(centres))

    def test_the_same_command_gives_the_same_bytes(self):
        for camera in ["front", "back"]:
            runs = []
            for run in ["first", "second"]:
                out = self.folder / camera / run
                done = analyze("--camera", camera, "--repeat", 3, "--out", out, ASTRONAUT)
                names = sorted(path.name for path in out.iterdir())
                runs.append((done.returncode, done.stdout, [(out / name).read_bytes() for name in names]))
            self.assertEqual(runs[0], runs[1])
            self.assertEqual(names, [f"astronaut_{camera}_{index:02}.png" for index in range(3)])
            width, height = struct.unpack(">II", runs[0][2][0][16:24])
            self.assertTrue(1000 <= width <= 1400 and height >= 600, (width, height))
            self.assertEqual([json.loads(line)["frameCount"] for line in runs[0][1].splitlines()], [1, 2, 3])

    def test_many_photographs_have_an_index(self):
        files = [self.file(name, grey_png(64, 48)) for name in ["a b#1.png", "c<i>.png"]]
        out = self.folder / "out"
        done = analyze("--faces", "none", "--out", out, *files, VEXA_ENGINE="fixed")
        self.assertEqual(done.returncode, 0, done.stderr)
        index = (out / "index.html").read_text()
        links = re.findall(r'href="([^"]*png)"', index)
        self.assertEqual(links, ["./a%20b%231_front.png", "./c%3Ci%3E_front.png"])
        self.assertIn("<h2>c&lt;i&gt;.png</h2>", index)
        for link in links:
            self.assertTrue((out / urllib.parse.unquote(link)).exists(), link)

    def test_the_trace_has_every_frame(self):
        self.frames("--trace", self.folder / "trace.json", "--repeat", 2, HOPPER, ASTRONAUT)
        events = json.loads((self.folder / "trace.json").read_text())["traceEvents"]
        inputs = [event["args"]["input"] for event in events if event["name"].startswith("frame ")]
        self.assertEqual(inputs, [str(HOPPER)] * 2 + [str(ASTRONAUT)] * 2)
        self.assertEqual(sum(event["name"] == "network" for event in events), 4)

    def test_no_input_leaves_a_trace_in_the_next(self):
        alone, together = self.frames(HOPPER), self.frames(ASTRONAUT, HOPPER)
        self.assertEqual(alone, together[1:])

    def test_the_library_keeps_off_standard_output(self):
        quiet, verbose = analyze(HOPPER), analyze("--verbose", HOPPER)
        self.assertEqual(quiet.stdout, verbose.stdout)
        self.assertEqual(quiet.stderr, "")
        self.assertIn("init Time", verbose.stderr)

    def test_geometry_of_raw_frames(self):
        sizes = {(192, 108): (256, 144, 36), (108, 192): (144, 256, 64), (64, 48): (256, 192, 48),
                 (200, 100): (256, 128, 28)}
        files = [self.file(f"raw_{w}x{h}.nv21", bytes(w * h * 3 // 2)) for w, h in sizes]
        frames = self.frames("--faces", "none", *files)
        self.assertEqual([(g["shrunkWidth"], g["shrunkHeight"], g["segFactor"])
                          for g in (frame["geometry"] for frame in frames)], list(sizes.values()))
        self.assertEqual([frame["cameraFaces"] for frame in frames], [[]] * 4)

    def test_padded_rows_are_noted(self):
        done = analyze("--faces", "none", self.file("grey_64x48_s80.nv21", b"\x80" * (80 * 72)))
        geometry = json.loads(done.stdout)["geometry"]
        self.assertEqual((geometry["width"], geometry["height"], geometry["stride"]), (64, 48, 80))
        self.assertIn("sheared", done.stderr)

    def test_cut_off_jpeg_is_not_analysed_as_half_a_picture(self):
        done = analyze(self.file("cut.jpg", HOPPER.read_bytes()[:30000]))
        self.assertEqual((done.returncode, done.stdout, done.stderr.count("\n")), (2, "", 1))
        self.assertIn("cut.jpg", done.stderr)

    def test_a_still_picture_keeps_its_record(self):
        # Equal maps blend into themselves, so every frame gives the first one's record.
        for camera in ["front", "back"]:
            frames = self.frames("--camera", camera, "--repeat", 4, HOPPER)
            self.assertEqual([frame["record"] for frame in frames], [frames[0]["record"]] * 4)

    def test_odd_photograph_faces_file_and_table(self):
        picture = self.file("odd.png", grey_png(65, 49))
        faces = self.file("faces.json", '{"odd.png": [{"x": 4, "y": 6, "w": 20, "h": 30}]}')
        frame, = self.frames("--faces", faces, picture)
        self.assertEqual((frame["geometry"]["width"], frame["geometry"]["height"]), (64, 48))
        self.assertEqual(frame["cameraFaces"], [{"x": 4, "y": 6, "w": 20, "h": 30}])
        table = analyze("--faces", faces, "--format", "table", picture).stdout.splitlines()
        self.assertIn("64x48", table[1])


if __name__ == "__main__":
    unittest.main()
