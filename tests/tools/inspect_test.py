"""`morvale inspect` and `morvale doctor` from outside: what they say of records, bundles and this machine.

Environment: MORVALE_PROGRAM, the program. Needs no network.
"""
import hashlib
import json
import os
import pathlib
import struct
import subprocess
import tempfile
import unittest

from bundles import forget_hashes

PROGRAM = os.environ.get("MORVALE_PROGRAM", "build/release/tools/morvale/morvale")


def morvale(*arguments, **options):
    return subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, timeout=1200, **options)


def record(words):
    """A record that is 0 but for {offset: value}."""
    data = bytearray(288)
    for offset, value in words.items():
        struct.pack_into("<I", data, offset, value % (1 << 32))
    return bytes(data)


def words_of(*arguments, data):
    """The text about records that come by standard input."""
    done = morvale("inspect", "-", *arguments, input=data)
    assert (done.returncode, done.stderr) == (0, b""), done
    return done.stdout.decode()


def json_of(*arguments, data=None):
    done = morvale("inspect", "--format", "json", *arguments, input=data)
    assert (done.returncode, done.stderr) == (0, b""), done
    return json.loads(done.stdout)


class Records(unittest.TestCase):
    def test_whose_record(self):
        five = record({0: 5, 4: 12})
        self.assertIn("faces: 3 in the record (ver 5)", words_of(data=five))
        self.assertIn("a person candidate was seen", words_of("--camera", "back", data=five))
        shown = json_of("-", "--camera", "back", "--offsets", "--hex", data=five)
        self.assertEqual((shown["records"][0]["hex"], len(shown["records"][0]["words"])), (five.hex(), 72))
        self.assertIn("meta[0].hsv[0]", words_of("--offsets", "--hex", data=five))

    def test_which_frames(self):
        data = b"".join(record({4: i}) for i in range(1, 6))
        self.assertIn("humanRatio      1 to 5\n", words_of(data=data))
        for flags, frames in [([], [0]), (["--frame", 4], [4]), (["--all"], [0, 1, 2, 3, 4])]:
            records = json_of("-", *flags, data=data)["records"]
            self.assertEqual([(r["frame"], r["record"]["humanRatio"]) for r in records], [(i, i + 1) for i in frames])


class Bundles(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.bundle = self.folder / "scene"
        done = morvale("scene", "--out", self.bundle, "--size", "320x240", "--frames", 4)
        self.assertEqual(done.returncode, 0, done.stderr)

    def change(self, frame, **keys):
        """Sets keys of a frame's line; None takes one away."""
        forget_hashes(self.bundle)
        path = self.bundle / "metadata.jsonl"
        lines = [json.loads(line) for line in path.read_text().splitlines()]
        lines[frame].update(keys)
        lines[frame] = {key: value for key, value in lines[frame].items() if value is not None}
        path.write_text("".join(json.dumps(line) + "\n" for line in lines))

    def test_summary(self):
        self.assertIsNone(json_of(self.bundle)["session"]["networkMs"])
        self.change(0, network_ms=9.5)
        self.change(1, network_ms=40, nv21=None)
        self.change(2, gate_level=25.5, execute=None, logits=None, labels=None)
        self.change(3, process=-1, execute=1, logits=None, face_count=0, faces=[], network_ms=8)
        with open(self.bundle / "metadata.jsonl", "a", encoding="utf-8") as file:
            file.write('{"frame":4')
        shown = json_of(self.bundle)
        session = shown["session"]
        self.assertEqual((shown["kind"], shown["camera"], shown["frames"]), ("bundle", "front", 4))
        self.assertEqual({key: session[key] for key in ["sizes", "withPixels", "withScores", "withLabels", "failed",
                                                        "gated", "withoutNetwork", "cameraFaces", "networkMs"]},
                         {"sizes": ["320x240"], "withPixels": 3, "withScores": 2, "withLabels": 3, "failed": 1,
                          "gated": 1, "withoutNetwork": 1, "cameraFaces": {"least": 0, "most": 1},
                          "networkMs": {"runs": 3, "p50": 9.5, "p90": 40, "max": 40}})
        self.assertIn("frame 4 was still being written", session["warning"])
        text = morvale("inspect", self.bundle, "--all").stdout.decode()
        for fragment in ["frame 4 was still being written", "1 failed, 1 gated, 1 without a run of the network",
                         "p50 9.5, p90 40.0, longest 40.0 ms, over 3 runs", "256x256 in, 64x64x5 out; opened",
                         "frame 2, front camera, 320x240, 1 camera face, gated\n",
                         "frame 3, front camera, 320x240, 0 camera faces, failed\n"]:
            self.assertIn(fragment, text)

    def verify(self, path):
        done = morvale("inspect", "--verify", path)
        self.assertEqual(done.stderr, b"")
        return done.returncode, done.stdout.decode().splitlines()

    def test_verify_names_the_frames_that_changed(self):
        whole = f"{self.bundle}: 4 frames, all as recorded."
        self.assertEqual(self.verify(self.bundle), (0, [whole]))
        pixels = next(self.bundle.glob("frames/000002*"))
        data = pixels.read_bytes()
        pixels.write_bytes(data[:1000] + bytes([data[1000] ^ 1]) + data[1001:])
        records = (self.bundle / "records.bin").read_bytes()
        (self.bundle / "records.bin").write_bytes(records[:-1] + bytes([records[-1] ^ 128]))
        self.assertEqual(self.verify(self.bundle), (1, [
            f"{pixels}: frame 2: the bytes are not those that were recorded",
            f"{self.bundle}/records.bin: frame 3: the record is not the one that was recorded",
            f"{self.bundle}: 4 frames, 2 damaged."]))
        forget_hashes(self.bundle)
        self.assertIn("4 of an older version have no hashes", self.verify(self.bundle)[1][0])
        self.assertEqual(morvale("inspect", "--verify", self.folder / "none").returncode, 2)

    def test_a_bundle_without_frames(self):
        for name in ["metadata.jsonl", "records.bin"]:
            (self.bundle / name).write_bytes(b"")
        for path in self.bundle.glob("*/*"):
            path.unlink()
        self.assertEqual(json_of(self.bundle)["records"], [])

    def test_complaints(self):
        cut = self.folder / "cut"
        cut.write_bytes(b"\0" * 100)
        (self.bundle / "logits/000001.npy").rename(self.bundle / "logits/lost")
        for arguments, fragment in [([self.folder / "none"], "none"), ([cut], "100 bytes"), ([], "PATH"),
                                    ([self.bundle], "frame 1"), ([self.folder], "session.json"),
                                    (["-", "--frame", 1], "no frame 1"), (["-", "--frame", -1], "--frame"),
                                    (["-", "--frame", 0, "--all"], "--all"), (["-", "--camera", "up"], "--camera")]:
            with self.subTest(arguments=arguments):
                done = morvale("inspect", *arguments, input=record({}))
                self.assertEqual((done.returncode, done.stdout), (2, b""), done.stderr)
                self.assertRegex(done.stderr.decode(), r"\Amorvale: [^\n]+\.\n\Z")
                self.assertIn(fragment, done.stderr.decode())


class Doctor(unittest.TestCase):
    SIZES = [0, 3, 65535, 65536, 65537, 200000]  # around the piece in which a file is read

    def test_names_the_folder_without_models(self):
        with tempfile.TemporaryDirectory() as folder:
            environment = {**os.environ, "VEXA_MODEL_DIR": "", "XDG_CACHE_HOME": folder}
            facts = json.loads(morvale("doctor", "--json", env=environment).stdout)
        self.assertEqual((facts["models in"], facts["models"]), (f"{folder}/morvale/network", []))

    def test_model_hashes(self):
        with tempfile.TemporaryDirectory() as folder:
            expected = []
            for size in self.SIZES:
                content = (b"abc" + bytes(i % 251 for i in range(size)))[:size]
                (pathlib.Path(folder) / f"{size:06d}.onnx").write_bytes(content)
                expected.append({"name": f"{size:06d}.onnx", "bytes": size,
                                 "sha256": hashlib.sha256(content).hexdigest()})
            environment = {**os.environ, "VEXA_MODEL_DIR": folder, "MORVALE_KERNELS": "portable"}
            done = morvale("doctor", "--json", env=environment)
            text = morvale("doctor", env=environment).stdout.decode()
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        facts = json.loads(done.stdout)
        self.assertEqual(facts["models"], expected)
        self.assertIs(facts["self-check"], True)
        self.assertIn("portable (in use)", facts["kernels"])
        self.assertIn(os.uname().release, facts["system"])
        self.assertIn(expected[1]["sha256"], text)
        self.assertRegex(text, r"\nself-check +passed\n\Z")


if __name__ == "__main__":
    unittest.main()
