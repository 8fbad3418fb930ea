"""`morvale replay` from outside: recordings that come out as they went in, streams, selections, and what it writes.

Environment: MORVALE_PROGRAM, the program; MORVALE_PHOTO_DIR and MORVALE_MODEL_DIR, photographs and the network (only
for the test that needs them; it is skipped without). MORVALE_REQUIRE_NETWORK=1 makes their absence a failure.
"""
import base64
import csv
import io
import json
import os
import pathlib
import random
import re
import signal
import struct
import subprocess
import tempfile
import time
import unittest

from bundles import forget_hashes

PROGRAM = os.environ.get("MORVALE_PROGRAM", "build/release/tools/morvale/morvale")
PHOTOS = pathlib.Path(os.environ.get("MORVALE_PHOTO_DIR", "/nonexistent"))
MODELS = pathlib.Path(os.environ.get("MORVALE_MODEL_DIR", "/nonexistent"))


def morvale(*arguments, stdin=None):
    return subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, input=stdin, timeout=1200)


def picture(path, width, height, seed):
    """A coarse random pattern as a PPM."""
    noise = random.Random(seed)
    cells = [[bytes(noise.randrange(256) for _ in range(3)) for _ in range(width // 16 + 1)] for _ in range(height // 16 + 1)]
    rows = b"".join(b"".join(cells[y // 16][x // 16] for x in range(width)) for y in range(height))
    path.write_bytes(b"P6 %d %d 255\n" % (width, height) + rows)


def y4m(width, height, frames, header=b" C420jpeg"):
    """The stream, and the planes of each frame."""
    noise = random.Random(3)
    chroma = (width + 1) // 2 * ((height + 1) // 2)
    planes = [(noise.randbytes(width * height), noise.randbytes(chroma), noise.randbytes(chroma)) for _ in range(frames)]
    body = b"".join(b"FRAME\n" + b"".join(three) for three in planes)
    return b"YUV4MPEG2 W%d H%d F25:1 Ip%s\n" % (width, height, header) + body, planes


def avi(width, height, colours):
    """A video of flat frames, uncompressed: RIFF lists around bottom-up BGR rows."""
    def chunk(name, body):
        return name + struct.pack("<I", len(body)) + body + b"\0" * (len(body) % 2)

    size = width * height * 3
    head = struct.pack("<14I", 40000, size * 25, 0, 16, len(colours), 0, 1, size, width, height, 0, 0, 0, 0)
    stream = b"vidsDIB " + struct.pack("<IHHIIIIIIII4h", 0, 0, 0, 0, 1, 25, 0, len(colours), size, 0, 0, 0, 0, width, height)
    format = struct.pack("<IiiHHIIiiII", 40, width, height, 1, 24, 0, size, 0, 0, 0, 0)
    frames = b"".join(chunk(b"00db", bytes(colour[::-1]) * (width * height)) for colour in colours)
    header = b"hdrl" + chunk(b"avih", head) + chunk(b"LIST", b"strl" + chunk(b"strh", stream) + chunk(b"strf", format))
    return chunk(b"RIFF", b"AVI " + chunk(b"LIST", header) + chunk(b"LIST", b"movi" + frames))


def report_data(folder):
    html = (folder / "report.html").read_text()
    return json.loads(re.search(r'<script[^>]*id="report-data"[^>]*>(.*?)</script>', html, re.DOTALL)[1])


class Replays(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_well(self, *arguments, status=0, stdin=None):
        done = morvale("replay", *arguments, stdin=stdin)
        self.assertEqual(done.returncode, status, done.stderr.decode())
        return [json.loads(line) for line in done.stdout.splitlines()], done.stderr.decode()

    def scene(self, name, *flags):
        done = morvale("scene", "--out", self.folder / name, "--size", "160x120", *flags)
        self.assertEqual(done.returncode, 0, done.stderr)
        return self.folder / name

    def refused(self, part, *arguments, stdin=None):
        """One sentence, exit status 2, nothing on standard output."""
        done = morvale("replay", *arguments, stdin=stdin)
        words = done.stderr.decode()
        self.assertEqual((done.returncode, done.stdout), (2, b""), words)
        self.assertRegex(words, r"\Amorvale: [^\n]*\n\Z")
        self.assertIn(part, words)

    def files(self, bundle):
        return {str(path.relative_to(bundle)): path.read_bytes() for path in sorted(bundle.rglob("*")) if path.is_file()}


class Recordings(Replays):
    def test_a_recording_comes_out_as_it_went_in(self):
        picture(self.folder / "photo.ppm", 333, 222, 1)
        for camera in "front", "back":
            first = self.folder / f"first_{camera}"
            lines, words = self.run_well("--pan", self.folder / "photo.ppm", "--engine", "fixed", "--camera", camera,
                                         "--frames", 30, "--size", "320x240", "--faces", "none", "--record", first)
            self.assertEqual([line["frame"] for line in lines], list(range(30)))
            again = self.folder / f"again_{camera}"
            replayed, words = self.run_well(first, "--record", again)
            self.assertIn("30 frames, all records as recorded", words)
            strip = lambda lines: [{k: v for k, v in line.items() if k != "input"} for line in lines]
            self.assertEqual(strip(replayed), strip(lines))
            one, two = self.files(first), self.files(again)
            for files in one, two:
                files.pop("session.json")  # says how each was made
            self.assertEqual(one, two)
            self.assertEqual(len(one["records.bin"]), 30 * 288)

    def test_the_network_is_not_asked_again(self):
        photo = PHOTOS / "grace_hopper_512x512.jpg"
        if not (photo.exists() and MODELS.is_dir()):
            self.assertFalse(os.environ.get("MORVALE_REQUIRE_NETWORK"), "photographs or network are missing")
            self.skipTest("needs the photographs and the network")
        self.run_well("--pan", photo, "--frames", 5, "--model-dir", MODELS, "--record", self.folder / "pan")
        os.environ["VEXA_MODEL_DIR"] = "/nonexistent"
        self.addCleanup(os.environ.pop, "VEXA_MODEL_DIR")
        lines, words = self.run_well(self.folder / "pan")
        self.assertIn("5 frames, all records as recorded", words)
        self.assertGreater(min(line["record"]["humanRatio"] for line in lines), 5)

    def test_the_first_difference_is_named(self):
        scene = self.scene("scene", "--frames", 6)
        forget_hashes(scene)
        records = bytearray((scene / "records.bin").read_bytes())
        for frame, offset in (3, 4), (5, 28):
            value, = struct.unpack_from("<i", records, frame * 288 + offset)
            struct.pack_into("<i", records, frame * 288 + offset, value + 9)
        (scene / "records.bin").write_bytes(records)
        _, words = self.run_well(scene, status=1)
        self.assertRegex(words, r"2 not as recorded, the first: frame 3: humanRatio \(byte 4\) is (\d+), recorded as \d+")
        _, words = self.run_well(scene, "--frames", 3)
        self.assertIn("all records as recorded", words)

    def test_a_damaged_frame_is_refused_or_left_out(self):
        scene = self.scene("scene", "--frames", 6)
        pixels = next(scene.glob("frames/000002*"))
        pixels.write_bytes(b"\0" * pixels.stat().st_size)
        lines, words = self.run_well(scene, status=2)
        self.assertEqual(len(lines), 2)
        self.assertIn(f"{pixels}: frame 2: the bytes are not those that were recorded.", words)
        lines, words = self.run_well(scene, "--keep-going", status=1)
        self.assertEqual([line["frame"] for line in lines], [0, 1, 3, 4, 5])
        self.assertIn("frame 2: the bytes are not those that were recorded; it is left out.", words)
        self.assertIn("1 damaged and left out, the first: frame 2, behind which no record is compared", words)

    def test_other_frames_than_recorded_are_not_held_against_the_record(self):
        scene = self.scene("scene", "--frames", 6)
        for flags in ["--start", 2], ["--every", 2], ["--repeat", 2]:
            _, words = self.run_well(scene, *flags)
            self.assertIn("not compared", words)
        lines, words = self.run_well(scene, "--gate", 25.5)
        self.assertTrue(all(line["gated"] and line["record"]["humanRatio"] == 0 for line in lines))
        self.assertIn("6 not as recorded", words)
        self.refused("its own camera", scene, "--engine", "recorded", "--camera", "back")

    def test_a_frame_that_fails_only_now_is_a_failure(self):
        scene = self.scene("scene", "--frames", 3)
        gated = self.folder / "gated"
        self.run_well(scene, "--gate", 25.5, "--record", gated)
        self.assertFalse((gated / "labels").exists(), "no map was read")
        _, words = self.run_well(gated)
        self.assertIn("all records as recorded", words)
        _, words = self.run_well(gated, "--gate", 0, status=1)  # the recording holds no scores
        self.assertIn("3 failed, the first: frame 0", words)

    def test_a_refused_frame_is_refused_again(self):
        """With debug drawings, which go into the rows that such a frame claims to have."""
        scene = self.scene("scene", "--frames", 3)
        forget_hashes(scene)
        lines = [json.loads(line) for line in (scene / "metadata.jsonl").read_text().splitlines()]
        lines[1].update(width=0, stride=640, process=-1)
        for key in "nv21", "logits", "labels", "execute":
            lines[1].pop(key, None)
        (scene / "metadata.jsonl").write_text("".join(json.dumps(line) + "\n" for line in lines))
        replayed, _ = self.run_well(scene, "--debug-level", 1, "--report", self.folder / "report")
        self.assertEqual([line["process"] for line in replayed], [0, -1, 0])

    def test_a_recording_says_which_model_it_had(self):
        scene = self.scene("scene", "--frames", 3, "--camera", "back")
        forget_hashes(scene)
        lines = [json.loads(line) for line in (scene / "metadata.jsonl").read_text().splitlines()]
        session = json.loads((scene / "session.json").read_text())
        session["camera_type"] = 16  # as when the first frame's camera is not the model's
        (scene / "session.json").write_text(json.dumps(session))
        _, words = self.run_well(scene)
        self.assertIn(f"{len(lines)} frames, all records as recorded", words)

    def test_a_killed_recording_replays(self):
        for sent, status in (signal.SIGKILL, -signal.SIGKILL), (signal.SIGINT, 130):
            killed = self.folder / sent.name
            scene = self.scene("scene_" + sent.name, "--frames", 30)
            process = subprocess.Popen(
                [PROGRAM, "replay", scene, "--repeat", "10000", "--format", "none", "--record", killed],
                stderr=subprocess.PIPE)
            deadline = time.monotonic() + 100
            lines = killed / "metadata.jsonl"
            while not (lines.exists() and lines.read_bytes().count(b"\n") > 40):
                self.assertLess(time.monotonic(), deadline)
                time.sleep(0.01)
            process.send_signal(sent)
            words = process.communicate(timeout=1200)[1].decode()
            self.assertEqual(process.returncode, status, words)
            kept = lines.read_bytes().count(b"\n")
            replayed, words = self.run_well(killed)
            self.assertIn(f"{kept} frames, all records as recorded", words)
            self.assertEqual(len(replayed), kept)


class Sources(Replays):
    def test_a_selection(self):
        scene = self.scene("scene", "--frames", 12)
        lines, _ = self.run_well(scene, "--start", 3, "--every", 4, "--repeat", 2)
        self.assertEqual([line["frame"] for line in lines], [3, 7, 11] * 2)
        lines, _ = self.run_well(scene, "--start", 3, "--every", 4, "--frames", 2)
        self.assertEqual([line["frame"] for line in lines], [3, 7])
        self.refused("no frame to replay", scene, "--start", 12)

    def test_a_stream_keeps_its_samples(self):
        for width, height in (64, 48), (65, 49):
            stream, planes = y4m(width, height, 4)
            out = self.folder / f"{width}"
            flags = ["--engine", "fixed", "--faces", "none", "--record", out]
            lines, _ = self.run_well("-", *flags, stdin=stream)
            self.assertEqual([line["frame"] for line in lines], [0, 1, 2, 3])
            self.assertEqual([line["seconds"] for line in lines], [0, 0.04, 0.08, 0.12])
            frame = (out / "frames/000002_64x48_s64.nv21").read_bytes()
            y, u, v = planes[2]
            chroma = (width + 1) // 2
            luma = b"".join(y[row * width:][:64] for row in range(48))
            pairs = b"".join(bytes([v[row * chroma + x], u[row * chroma + x]]) for row in range(24) for x in range(32))
            self.assertEqual(frame, luma + pairs)
        (self.folder / "clip.y4m").write_bytes(stream)
        lines, _ = self.run_well(self.folder / "clip.y4m", "--engine", "fixed", "--faces", "none", "--start", 3)
        self.assertEqual([line["frame"] for line in lines], [3])

    def test_streams_that_cannot_be_read(self):
        stream, _ = y4m(64, 48, 2)
        fixed = ["-", "--engine", "fixed", "--faces", "none", "--format", "none"]
        self.refused("ends within frame 0", *fixed, stdin=stream[:99])
        self.refused("does not begin with FRAME", *fixed, stdin=stream.replace(b"FRAME", b"frame"))
        self.refused("no YUV4MPEG2", *fixed, stdin=b"RIFF....AVI ")
        self.refused("no YUV4MPEG2", *fixed, stdin=b"")
        for format in b" C422", b" C420p10", b" Cmono":
            self.refused("4:2:0", *fixed, stdin=y4m(64, 48, 1, format)[0])
        self.refused("names no size", *fixed, stdin=b"YUV4MPEG2 W64\nFRAME\n")
        self.refused("pixels a side", *fixed, stdin=b"YUV4MPEG2 W64 H99999999999\nFRAME\n")
        self.refused("passes by once", *fixed, "--repeat", 2, stdin=stream)

    def test_a_stream_that_breaks_off_keeps_what_came(self):
        stream, _ = y4m(64, 48, 3)
        done = morvale("replay", "-", "--engine", "fixed", "--faces", "none", "--record", self.folder / "kept",
                       "--report", self.folder / "report", stdin=stream[:-1])
        self.assertEqual(done.returncode, 2)
        self.assertIn(b"ends within frame 2", done.stderr)
        self.assertEqual(len(done.stdout.splitlines()), 2)
        self.assertTrue((self.folder / "report/report.html").exists())
        _, words = self.run_well(self.folder / "kept")
        self.assertIn("2 frames, all records as recorded", words)

    def test_a_video(self):
        colours = [(200, 40, 40), (40, 200, 40), (40, 40, 200), (128, 128, 128)]
        (self.folder / "clip.avi").write_bytes(avi(64, 48, colours))
        flags = ["--engine", "fixed", "--faces", "none", "--record"]
        lines, _ = self.run_well(self.folder / "clip.avi", *flags, self.folder / "out")
        self.assertEqual([line["frame"] for line in lines], [0, 1, 2, 3])
        self.assertEqual([line["seconds"] for line in lines], [0, 0.04, 0.08, 0.12])
        for frame, (red, green, blue) in enumerate(colours):
            luma = (self.folder / f"out/frames/{frame:06d}_64x48_s64.nv21").read_bytes()[48 * 32 + 32]
            self.assertAlmostEqual(luma, 0.299 * red + 0.587 * green + 0.114 * blue, delta=2)
        lines, _ = self.run_well(self.folder / "clip.avi", "--start", 1, "--every", 2, *flags, self.folder / "some")
        self.assertEqual([(line["frame"], line["seconds"]) for line in lines], [(1, 0.04), (3, 0.12)])
        done = morvale("replay", self.folder / "clip.avi", "--format", "csv", "--engine", "fixed", "--faces", "none",
                       "--report", self.folder / "report")
        rows = list(csv.DictReader(io.StringIO(done.stdout.decode())))
        self.assertEqual([row["seconds"] for row in rows], ["0.000", "0.040", "0.080", "0.120"])
        self.assertEqual(report_data(self.folder / "report")["frames"]["seconds"], [0, 0.04, 0.08, 0.12])
        self.assertEqual((self.folder / "some/frames/000001_64x48_s64.nv21").read_bytes(),
                         (self.folder / "out/frames/000003_64x48_s64.nv21").read_bytes())

    def test_a_folder_in_the_order_people_count(self):
        for number in 1, 2, 10:
            picture(self.folder / f"shot{number}.ppm", 64, 48, number)
        (self.folder / "notes.txt").write_text("no picture")
        lines, words = self.run_well(self.folder, "--engine", "fixed", "--faces", "none")
        self.assertEqual([line["picture"] for line in lines], ["shot1.ppm", "shot2.ppm", "shot10.ppm"])
        self.assertIn("passed over what is no picture: notes.txt.", words)
        self.assertEqual([line["frameCount"] for line in lines], [1, 2, 3], "one session, smoothed throughout")
        faces = {f"shot{number}.ppm": [{"x": number, "y": 8, "w": 20, "h": 24}] for number in (1, 2, 10)}
        (self.folder / "faces.json").write_text(json.dumps(faces))
        lines, _ = self.run_well(self.folder, "--engine", "fixed", "--faces", self.folder / "faces.json")
        self.assertEqual([line["cameraFaces"][0]["x"] for line in lines], [1, 2, 10])

    def test_one_bad_picture_does_not_end_a_batch(self):
        for number in 1, 3:
            picture(self.folder / f"shot{number}.ppm", 64, 48, number)
        (self.folder / "shot2.ppm").write_bytes((self.folder / "shot1.ppm").read_bytes()[:99])
        flags = ["--engine", "fixed", "--faces", "none"]
        lines, words = self.run_well(self.folder, *flags, "--keep-going", status=2)
        self.assertEqual([line["picture"] for line in lines], ["shot1.ppm", "shot3.ppm"])
        self.assertIn("shot2.ppm: the picture cannot be decoded", words)
        self.assertIn("2 frames; left out what could not be read: shot2.ppm.", words)
        lines, _ = self.run_well(self.folder, *flags, status=2)
        self.assertEqual(len(lines), 1, "without the flag it ends the session")
        scenes = [self.scene(f"scene{number}", "--frames", 2) for number in (1, 2, 3)]
        (scenes[1] / "records.bin").unlink()
        lines, words = self.run_well(*scenes, status=2)
        self.assertEqual(len(lines), 4)
        self.assertIn(f"1 of 3 inputs did not end well: {scenes[1]}.", words)

    def test_a_size_that_would_change_nothing_is_refused(self):
        self.refused("have a size of their own", self.scene("scene", "--frames", 1), "--size", "64x48")
        self.refused("have a size of their own", "-", "--size", "64x48", stdin=y4m(64, 48, 1)[0])

    def test_inputs_that_cannot_be_used(self):
        empty = self.folder / "empty"
        empty.mkdir()
        junk = self.folder / "junk.mp4"
        junk.write_bytes(b"no video")
        self.refused("no such file", self.folder / "missing")
        self.refused("neither pictures nor", empty, "--engine", "fixed")
        self.refused("nor a video", junk, "--engine", "fixed")
        self.refused("INPUT is missing")
        self.refused("is no recording", junk, "--engine", "recorded")
        scene = self.scene("scene", "--frames", 2)
        self.refused("is not empty", scene, "--record", scene)
        self.refused("is not a folder", scene, "--report", junk)
        self.refused("cannot be a file", scene, "--trace", self.folder / "missing/trace.json")
        self.refused("names no frame and file", scene, "--picture", "frame.png")
        self.refused("there is no frame 2", scene, "--format", "none", "--picture", f"2={self.folder}/frame.png")
        self.refused("is no YUV4MPEG2", "-", "--engine", "fixed", "--record", self.folder / "fresh", stdin=b"")
        self.assertFalse((self.folder / "fresh").exists(), "a session without a frame leaves no folder")
        (scene / "logits/000001.npy").unlink()
        self.refused("logits/000001.npy", scene)


class Outputs(Replays):
    def test_csv_has_every_word_of_the_record(self):
        scene = self.scene("scene", "--frames", 3)
        done = morvale("replay", scene, "--format", "csv")
        rows = list(csv.DictReader(io.StringIO(done.stdout.decode())))
        records = (scene / "records.bin").read_bytes()
        self.assertEqual(len(rows), 3)
        for frame, row in enumerate(rows):
            words = [int(value) for value in list(row.values())[-72:]]
            self.assertEqual(words[:2], list(struct.unpack_from("<2i", records, frame * 288)))
            self.assertEqual([word & 0xFFFFFFFF for word in words], list(struct.unpack_from("<72I", records, frame * 288)))
            self.assertEqual(int(row["meta[0].hsv[2]"]), words[10])

    def test_many_recordings_at_a_time(self):
        scenes = [self.scene(f"scene{seed}", "--seed", seed, "--frames", 4) for seed in range(5)]
        alone = b"".join(morvale("replay", scene).stdout for scene in scenes)
        forget_hashes(scenes[3])
        records = bytearray((scenes[3] / "records.bin").read_bytes())
        records[4] ^= 1
        (scenes[3] / "records.bin").write_bytes(records)
        done = morvale("replay", "--jobs", 3, "--report", self.folder / "reports", *scenes)
        self.assertEqual((done.stdout, done.returncode), (alone, 1))
        self.assertEqual(re.findall(r"scene(\d): 4 frames(, all|; 1 not)", done.stderr.decode()),
                         [("0", ", all"), ("1", ", all"), ("2", ", all"), ("3", "; 1 not"), ("4", ", all")])
        self.assertEqual(sorted(path.parent.name for path in self.folder.glob("reports/*/report.html")),
                         [f"scene{seed}" for seed in range(5)])
        index = (self.folder / "reports/index.html").read_text()
        self.assertEqual(re.findall(r'href="\./(scene\d/report\.html)"', index), [f"scene{seed}/report.html" for seed in range(5)])
        self.assertEqual([index.count('<li class="bad">'), index.count("<li>"), index.count("data:image/jpeg")], [1, 4, 5])
        self.assertIn("4 frames; 1 not as recorded, the first: frame 0", index)
        done = morvale("replay", "--jobs", 2, "--format", "csv", *scenes[:2])
        self.assertEqual([line[:6] for line in done.stdout.splitlines()].count(b"input,"), 1, "one heading for all")
        self.refused("is given twice", scenes[0], str(scenes[0]) + "/", "--report", self.folder / "r")

    def test_recordings_of_one_name_keep_their_devices(self):
        scenes = [self.scene(f"{device}/session-0001", "--seed", seed, "--frames", 2) for seed, device in enumerate("ab")]
        done = morvale("replay", "--report", self.folder / "reports", "--record", self.folder / "kept", *scenes)
        self.assertEqual(done.returncode, 0, done.stderr)
        for device in "ab":
            self.assertTrue((self.folder / "kept" / device / "session-0001/session.json").is_file())
            self.assertTrue((self.folder / "reports" / device / "session-0001/report.html").is_file())
        self.assertEqual(re.findall(r'href="\./(.*?)"', (self.folder / "reports/index.html").read_text()),
                         ["a/session-0001/report.html", "b/session-0001/report.html"])

    def test_many_recordings_stop_together(self):
        scenes = [self.scene(f"scene{seed}", "--seed", seed, "--frames", 4) for seed in range(3)]
        process = subprocess.Popen([PROGRAM, "replay", "--jobs", "2", "--repeat", "100000", "--format", "none",
                                    "--record", self.folder / "kept", *scenes], stderr=subprocess.PIPE)
        deadline = time.monotonic() + 100
        begun = [self.folder / "kept" / scene.name / "metadata.jsonl" for scene in scenes[:2]]
        while not all(lines.exists() and lines.stat().st_size for lines in begun):
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.01)
        process.terminate()
        process.terminate()  # as a batch system does, to the process and to its group
        words = process.communicate(timeout=1200)[1].decode()
        self.assertEqual((process.returncode, words.count("stopped there")), (130, 2), words)
        self.assertFalse((self.folder / "kept/scene2").exists(), "none is started after the wish to stop")

    def test_the_report_holds_the_records(self):
        scene = self.scene("scene", "--frames", 5, "--people", 2)
        self.run_well(scene, "--report", self.folder / "report")
        data = report_data(self.folder / "report")
        self.assertIsNone(data["frames"]["seconds"], "a recording has no time stamps")
        self.assertEqual(base64.b64decode(data["records"]), (scene / "records.bin").read_bytes())
        self.assertEqual(data["comparison"], {"same": True, "frames": 5})
        self.assertEqual(len(data["pictures"]), 5)
        self.assertTrue(all(base64.b64decode(jpeg).startswith(b"\xff\xd8") for jpeg in data["pictures"]))
        labels = (next(iter((scene / "labels").glob("000004*")))).read_bytes()
        winners = [max(range(5), key=lambda label: labels[cell + label]) for cell in range(0, len(labels), 5)]
        runs = base64.b64decode(data["label_runs"][4])
        self.assertEqual([run >> 5 for run in runs for _ in range((run & 31) + 1)], winners)
        self.assertEqual([event["kind"] for event in data["events"]], ["found"])

    def test_a_report_of_strips(self):
        picture(self.folder / "strip.ppm", 4000, 2, 1)
        self.run_well(self.folder / "strip.ppm", "--engine", "fixed", "--faces", "none", "--report", self.folder / "out")

    def test_a_closed_standard_output(self):
        scene = self.scene("scene", "--frames", 2)
        command = f'"{PROGRAM}" replay "{scene}" --record "{self.folder}/copy" >&-'
        done = subprocess.run(["bash", "-c", command], capture_output=True, text=True, timeout=1200)
        self.assertEqual(done.returncode, 1)
        self.assertIn("output cannot be written", done.stderr)
        self.assertEqual((self.folder / "copy/records.bin").read_bytes()[:288], (scene / "records.bin").read_bytes()[:288])

    def test_the_report_tells_when_the_person_is_lost(self):
        for camera in "front", "back":
            scene = self.scene(camera, "--frames", 12, "--camera", camera)
            forget_hashes(scene)
            for frame in range(4, 9):
                path = scene / f"logits/{frame:06d}.npy"
                data = path.read_bytes()
                cells = (len(data) - 128) // 20
                self.assertIn(cells, (32 * 32, 64 * 64))
                path.write_bytes(data[:128] + struct.pack("<5f", 8, -8, -8, -8, -8) * cells)  # background alone
            out = self.folder / f"report_{camera}"
            self.run_well(scene, "--report", out, status=1)
            self.assertEqual([event["kind"] for event in report_data(out)["events"]], ["found", "lost", "found"], camera)

    def test_the_picture_is_of_the_frame_asked_for(self):
        scene = self.scene("scene", "--frames", 4, "--motion", "walk")
        pictures = {}
        for name, flags in [("a", ["3"]), ("again", ["3", "--frames", 4]), ("b", ["0"])]:
            file = self.folder / f"{name}.png"
            self.run_well(scene, "--picture", f"{flags[0]}={file}", *flags[1:])
            pictures[name] = file.read_bytes()
        self.assertTrue(pictures["a"].startswith(b"\x89PNG"))
        self.assertEqual(pictures["a"], pictures["again"])
        self.assertNotEqual(pictures["a"], pictures["b"])

    def test_the_trace_tells_the_stages(self):
        scene = self.scene("scene", "--frames", 3)
        self.run_well(scene, "--trace", self.folder / "trace.json")
        events = json.loads((self.folder / "trace.json").read_text())["traceEvents"]
        spans = [event for event in events if event["ph"] == "X"]
        frames = [span for span in spans if span["name"].startswith("frame ")]
        self.assertEqual([frame["name"] for frame in frames], ["frame 0", "frame 1", "frame 2"])
        for name in "source", "Morvale_process", "network", "Morvale_core_afterProcss":
            stages = [span for span in spans if span["name"] == name]
            self.assertEqual(len(stages), 3, name)
            for stage, frame in zip(stages, frames):
                self.assertGreaterEqual(stage["ts"], frame["ts"] - 0.01)
                self.assertLessEqual(stage["ts"] + stage["dur"], frame["ts"] + frame["dur"] + 0.01)


if __name__ == "__main__":
    unittest.main()
