"""Recordings, replays and analyses from Python.

Environment: PYTHONPATH, where the package lies; MORVALE_PROGRAM, the program; MORVALE_CHANGED_LIBRARY_FILE, a library whose
records tell 5 points more people; MORVALE_PHOTO_DIR and MORVALE_MODEL_DIR, photographs and the network (only for the test
that needs them; it is skipped without). MORVALE_REQUIRE_NETWORK=1 makes their absence a failure.
"""
import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from unittest import mock

import numpy as np
import pandas

import morvale

PROGRAM = os.environ["MORVALE_PROGRAM"]
CHANGED = os.environ["MORVALE_CHANGED_LIBRARY_FILE"]
PHOTO = pathlib.Path(os.environ.get("MORVALE_PHOTO_DIR", "/nonexistent"), "astronaut.png")
MODELS = pathlib.Path(os.environ.get("MORVALE_MODEL_DIR", "/nonexistent"))


class Sessions(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        for camera in "front", "back":
            cls.run_program("scene", "--out", cls.folder / camera, "--camera", camera, "--size", "160x120", "--frames", 6,
                            "--motion", "walk")
        cls.scene, cls.thin, cls.whole = (cls.folder / name for name in ("front", "thin.morvale", "whole.morvale"))
        cls.run_program("pack", cls.scene, cls.thin)
        cls.run_program("pack", "--whole", cls.scene, cls.whole)

    @classmethod
    def run_program(cls, *arguments):
        subprocess.run([PROGRAM, *map(str, arguments)], check=True, capture_output=True)


class Recordings(Sessions):
    def test_whole_thin_and_packed_hold_the_same(self):
        folder, thin, whole = map(morvale.open, (self.scene, self.thin, self.whole))
        self.assertEqual([len(r) for r in (folder, thin, whole)], [6, 6, 6])
        self.assertEqual([r[0].is_thin for r in (folder, thin, whole)], [False, True, False])
        for frames in zip(folder, thin, whole):
            for frame in frames:
                self.assertEqual(frame.record, frames[0].record)
                np.testing.assert_array_equal(frame.labels, frames[0].labels)
                np.testing.assert_array_equal(frame.scores, frames[0].scores)
            np.testing.assert_array_equal(frames[0].nv21, frames[2].nv21)
        stored = (self.scene / "frames/000003_160x120_s160.nv21").read_bytes()
        self.assertEqual(folder[3].nv21.tobytes(), stored)
        self.assertEqual(folder[-3].luma.tobytes() + folder[3].chroma.tobytes(), stored)
        frame = folder[3]
        self.assertTrue(np.shares_memory(frame.nv21, frame.luma), "a copy where none is needed")
        scores = np.load(self.scene / "logits/000003.npy")
        np.testing.assert_array_equal(folder[3].scores, scores)

    def test_records_are_the_bytes_that_were_recorded_and_pandas_takes_them(self):
        bytes_on_disk = (self.scene / "records.bin").read_bytes()
        records = morvale.open(self.scene).records
        self.assertEqual(records.tobytes(), bytes_on_disk)
        table = pandas.DataFrame(records)
        self.assertEqual(table.shape, (6, 72))
        words = np.frombuffer(bytes_on_disk, "<i4").reshape(6, 72)
        np.testing.assert_array_equal(table.to_numpy(), words)
        blocks = records.view(morvale.RECORD_BLOCKS)
        np.testing.assert_array_equal(blocks["meta"]["hsv"][:, 1, 2], table["meta[1].hsv[2]"])

    def test_the_names_are_those_of_inspect(self):
        done = subprocess.run([PROGRAM, "replay", "--format", "csv", self.scene], capture_output=True, text=True)
        self.assertEqual(done.stdout.split("\n")[0].strip().split(",")[-72:], list(morvale.RECORD.names))

    def test_planes_are_read_as_the_library_reads_them(self):
        """A frame whose chroma the stride finds, behind rows that are longer than the picture is wide."""
        bundle = self.folder / "strided"
        (bundle / "frames").mkdir(parents=True)
        pixels = bytes(range(8 * 4 + 8 * 2))
        (bundle / "frames/000000_6x4_s8.nv21").write_bytes(pixels)
        (bundle / "records.bin").write_bytes(bytes(288))
        (bundle / "session.json").write_text(json.dumps(
            {"format": "morvale-session", "version": 2, "camera_type": 0, "pad_size": 128, "net_size": 32, "open_result": 0,
             "made_by": "a test"}))
        (bundle / "metadata.jsonl").write_text(json.dumps(
            {"frame": 0, "camera_type": 0, "width": 6, "height": 4, "stride": 8, "gate_level": 30.0, "face_count": 1,
             "faces": [[1, 2, 3, 4]], "qerm_hint": 7, "is_udc": 0, "has_planes": True, "chroma": "found",
             "after_process": True, "process": 0, "nv21": "frames/000000_6x4_s8.nv21"}) + "\n")
        frame, = morvale.open(bundle)
        self.assertEqual(frame.luma.tobytes(), pixels[:24])
        self.assertEqual(frame.chroma.tobytes(), pixels[32:44])
        self.assertEqual(frame.nv21.tobytes(), pixels[:24] + pixels[32:44])
        self.assertEqual((frame.camera, frame.faces, frame.qerm_hint, frame.gate_level, frame.labels, frame.scores),
                         ("back", [(1, 2, 3, 4)], 7, 30.0, None, None))

    def test_what_is_no_recording_is_refused(self):
        broken = self.folder / "broken.morvale"
        broken.write_bytes(self.whole.read_bytes()[:2000])
        for path in self.folder / "nothing", broken:
            with self.assertRaisesRegex(morvale.RecordingError, path.name):
                morvale.open(path)
        with self.assertRaisesRegex(IndexError, "no frame 6 among 6"):
            morvale.open(self.scene)[6]


class Runs(Sessions):
    def test_a_replay_gives_the_recorded_records(self):
        for recording in self.scene, self.thin, self.folder / "back":
            replay = morvale.replay(recording)
            self.assertEqual(replay.records.tobytes(), morvale.open(recording).records.tobytes(), recording)
            self.assertEqual(replay.changed.tolist(), [])
            self.assertIn("all records as recorded", replay.summary)
        self.assertEqual(replay.records.tobytes(), (self.folder / "back/records.bin").read_bytes())

    def test_another_library_and_a_recording_of_the_replay(self):
        after = self.folder / "after"
        replay = morvale.replay(self.scene, library=CHANGED, record=after)
        self.assertEqual(replay.changed.tolist(), [0, 1, 2, 3, 4, 5])
        np.testing.assert_array_equal(replay.records["humanRatio"], morvale.open(self.scene).records["humanRatio"] + 5)
        self.assertEqual(replay.recording.records.tobytes(), replay.records.tobytes())
        for flags in ["--every", 2], ["--every", 2, "--repeat", 2]:
            self.assertIsNone(morvale.replay(self.scene, flags=flags).changed)

    def test_a_later_look_finds_the_recording_from_elsewhere(self):
        before = os.getcwd()
        self.addCleanup(os.chdir, before)
        os.chdir(self.folder)
        replay = morvale.replay("front", library=os.path.relpath(CHANGED), flags=["--frames=5"])
        os.chdir(before)
        self.assertIsNone(replay.changed, "five of six")
        self.assertTrue(replay.picture(2).startswith(b"\x89PNG"))

    def test_an_interrupted_replay_leaves_nothing(self):
        kept = self.folder / "interrupted.morvale"
        script = f"import morvale; morvale.replay({str(self.scene)!r}, record={str(kept)!r}, flags=['--repeat', '100000'])"
        process = subprocess.Popen([sys.executable, "-c", script], stderr=subprocess.PIPE)
        parts = lambda: list(self.folder.glob("interrupted*"))
        while not parts():
            self.assertIsNone(process.poll())
            time.sleep(0.01)
        process.send_signal(signal.SIGINT)
        self.assertIn(b"KeyboardInterrupt", process.communicate(timeout=1200)[1])
        self.assertEqual([path for path in parts() if ".part" in path.name], [])

    def test_a_notebook_shows_the_frame(self):
        replay = morvale.replay(self.scene)
        self.assertTrue(replay.picture(5).startswith(b"\x89PNG"))
        self.assertIn("data:image/png;base64,iVBOR", replay._repr_html_())
        analysis = morvale.analyze(np.full((120, 160, 3), 99, np.uint8), "back", flags=["--engine", "fixed"])
        self.assertEqual((analysis.camera, analysis.width, analysis.height), ("back", 160, 120))
        self.assertEqual(analysis.labels.shape, (24, 32, 5))
        self.assertEqual(analysis.frame.luma[5, 5], 99)
        self.assertIn("data:image/png;base64,iVBOR", analysis._repr_html_())

    def test_what_cannot_be_run_says_why(self):
        with self.assertRaisesRegex(morvale.ProgramError, "there is no such file"):
            morvale.replay(self.folder / "nothing")
        with self.assertRaisesRegex(morvale.ProgramError, "neither a picture nor a video"):
            morvale.analyze(self.scene / "records.bin")
        with self.assertRaisesRegex(ValueError, "cannot be read; name a built"):
            morvale.replay(self.scene, library=self.folder / "nothing.so")
        kernels = self.folder / "libmorvale_kernels.so"
        kernels.write_bytes(b"\x7fELF and no more")
        for library in kernels, self.scene / "records.bin", self.folder:
            with self.assertRaisesRegex(ValueError, "no capture library|cannot be read"):
                morvale.replay(self.scene, library=library)
        apart = self.folder / "sp ace.so"
        apart.symlink_to(CHANGED)
        with self.assertRaisesRegex(ValueError, "without blanks and colons"):
            morvale.analyze(PHOTO, library=apart)
        with self.assertRaisesRegex(morvale.ProgramError, "are these flags for a replay"):
            morvale.replay(self.scene, flags=["--help"])
        with self.assertRaisesRegex(ValueError, r"image must be uint8 .height, width, 3.* float64 \(3,\)"):
            morvale.analyze(np.zeros(3))
        with mock.patch.dict(os.environ, MORVALE_PROGRAM="", PATH="/nonexistent"):
            with self.assertRaisesRegex(morvale.ProgramError, "MORVALE_PROGRAM"):
                morvale.replay(self.scene)
        with mock.patch.dict(os.environ, MORVALE_CHANGED_LIBRARY="ends"):
            with self.assertRaisesRegex(morvale.ProgramError, "signal 6|replay"):
                morvale.replay(self.scene, library=CHANGED)

    def test_the_network_sees_the_person(self):
        if not (PHOTO.exists() and any(MODELS.glob("*.onnx"))):
            self.assertNotEqual(os.environ.get("MORVALE_REQUIRE_NETWORK"), "1", "no photograph or no network")
            self.skipTest("needs a photograph and the network")
        analysis = morvale.analyze(PHOTO, flags=["--model-dir", MODELS])
        self.assertEqual(len(analysis.faces), 1)
        self.assertGreater(analysis.human_ratio, 20)
        skin = morvale.LABELS.index("face skin")
        self.assertGreater((analysis.labels.argmax(2) == skin).sum(), 50)


if __name__ == "__main__":
    unittest.main()
