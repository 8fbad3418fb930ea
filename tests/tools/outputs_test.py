"""What a command leaves that cannot finish, because the disk is full, a file may not grow, the folder is read-only, nobody
reads on or the process is killed: whatever has a good name is whole.

Environment: MORVALE_PROGRAM, the program. Needs no network.
"""
import json
import os
import pathlib
import re
import resource
import signal
import subprocess
import tempfile
import time
import unittest

PROGRAM = os.environ.get("MORVALE_PROGRAM", "build/release/tools/morvale/morvale")
ENVIRONMENT = {**os.environ, "VEXA_ENGINE": "fixed"}

# In a mount namespace of its own: OPTIONS FOLDER COPY COMMAND..., on a disk of these options; what it leaves is copied.
ON_A_DISK = """mount -t tmpfs -o "$0" none "$1" || exit 99
folder=$1 copy=$2; shift 2
"$@"; status=$?
cp -a "$folder/." "$copy" && exit $status"""


def run(command, **options):
    return subprocess.run(list(map(str, command)), capture_output=True, timeout=1200, env=ENVIRONMENT, **options)


def size_of(folder):
    total = 0
    for path in folder.rglob("*"):
        try:
            total += path.stat().st_size
        except FileNotFoundError:
            pass  # renamed meanwhile
    return total


def flaw(path):
    """What is half about a file or a recording; nothing where it is whole."""
    if path.is_dir() and not (path / "session.json").exists():
        return None
    if path.is_dir() or path.suffix == ".morvale":
        done = run([PROGRAM, "replay", "--format", "none", path])
        return None if done.returncode == 0 or b"there is no frame to replay" in done.stderr else done.stderr
    content = path.read_bytes()
    if path.suffix == ".html":
        data = re.search(rb'id="report-data"[^>]*>(.*?)</script>', content, re.S)
        return None if b"</html>" in content[-100:] or data and json.loads(data[1]) else "no end of the page"
    if path.suffix == ".png":
        return None if content.endswith(b"IEND\xaeB`\x82") else "no end of the picture"
    if path.suffix == ".json":
        json.loads(content)
    if path.suffix == ".rgb":
        return None if len(content) == 3 * 640 * 480 else f"{len(content)} bytes"
    return None


class Outputs(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        scene = cls.folder / "scene"
        done = run([PROGRAM, "scene", "--out", scene, "--frames", 6])
        assert done.returncode == 0, done
        frames = sorted((scene / "frames").iterdir())
        replay = ["replay", "--engine", "recorded", scene]
        cls.outputs = {
            "report": [*replay, "--format", "json", "--report", "OUT/report"],
            "recording": [*replay, "--format", "csv", "--record", "OUT/recording"],
            "trace": [*replay, "--format", "none", "--repeat", 50, "--trace", "OUT/trace.json"],
            "pictures": ["analyze", "--faces", "none", "--out", "OUT/pictures", *frames[:3]],
            "kernel": ["convert", "--size", "640x480", "NV21toRGB", frames[0], "OUT/frame.rgb"],
            "scene": ["scene", "--frames", 6, "--out", "OUT/scene"],
            "packed": ["pack", "--whole", scene, "OUT/scene.morvale"],
            "comparison": ["diff", "--report", "OUT/comparison", scene, scene],
        }

    def for_each_output(self, check):
        """check(the command, then of what it writes when nothing stops it: all bytes, those of the largest file, what it prints)"""
        for name, arguments in self.outputs.items():
            def command(out):
                return [PROGRAM, *(str(a).replace("OUT", str(out)) for a in arguments)]

            with self.subTest(output=name):
                sound = self.fresh()
                done = run(command(sound))
                if b"without the report page" in done.stderr:
                    continue
                self.assertEqual(done.returncode, 0, done.stderr)
                self.assert_whole(sound)
                check(command, size_of(sound), max(p.stat().st_size for p in sound.rglob("*") if p.is_file()),
                      done.stdout)

    def fresh(self):
        return pathlib.Path(tempfile.mkdtemp(dir=self.folder))

    def assert_whole(self, out, killed=False):
        for path in out.rglob("*"):
            if ".part" in path.name:
                self.assertTrue(killed, f"{path} is left")
            else:
                self.assertIsNone(flaw(path), path)

    def assert_failed(self, done, out):
        self.assertNotEqual(done.returncode, 0)
        self.assertRegex(done.stderr.decode(), "^morvale: ")
        self.assert_whole(out)

    def on_a_disk(self, options, command):
        disk, copy = self.fresh(), self.fresh()
        done = run(["unshare", "--mount", "--map-root-user", "sh", "-c", ON_A_DISK, options, disk, copy, *command(disk)])
        if done.returncode == 99 or b"unshare failed" in done.stderr:
            self.skipTest("no disk can be mounted here")
        return done, copy

    def test_a_full_disk(self):
        def check(command, total, *_):
            for share in 0.1, 0.7:
                self.assert_failed(*self.on_a_disk(f"size={max(4096, int(total * share) // 4096 * 4096)}", command))
        self.for_each_output(check)

    def test_a_read_only_folder(self):
        def check(command, *_):
            done, copy = self.on_a_disk("ro", command)
            self.assert_failed(done, copy)
            self.assertEqual(list(copy.iterdir()), [])
        self.for_each_output(check)

    def test_a_file_that_may_not_grow(self):
        def check(command, _, largest, __):
            for limit in 0, largest // 2:
                for told in True, False:  # as an error, or by the signal that ends the process
                    def limited():
                        resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))
                        signal.signal(signal.SIGXFSZ, signal.SIG_IGN if told else signal.SIG_DFL)

                    out = self.fresh()
                    done = run(command(out), preexec_fn=limited, restore_signals=False)
                    self.assert_failed(done, out)
        self.for_each_output(check)

    def test_links_and_devices_stay_what_they_are(self):
        out = self.fresh()
        for name, target in ("link", "real"), ("full", "/dev/full"), ("null", "/dev/null"):
            (out / name).symlink_to(target)
        (out / "real").write_text("before")
        replay = self.outputs["trace"][:-1]
        statuses = [run([PROGRAM, *replay, out / name]).returncode for name in ("link", "full", "null")]
        self.assertEqual(statuses, [0, 1, 0])
        self.assertTrue(all((out / name).is_symlink() for name in ("link", "full", "null")))
        self.assertTrue(json.loads((out / "real").read_text()))
        self.assertEqual(len(list(out.iterdir())), 4)

    def test_nobody_reads_on(self):
        def check(command, _, __, printed):
            reader, writer = os.pipe()
            os.close(reader)
            out = self.fresh()
            process = subprocess.run(command(out), stdout=writer, stderr=subprocess.PIPE, timeout=1200, env=ENVIRONMENT)
            os.close(writer)
            self.assertEqual(process.returncode != 0, printed != b"", process)
            self.assert_whole(out, killed=process.returncode < 0)
        self.for_each_output(check)

    def test_a_kill(self):
        def check(command, total, *_):
            for share in 0.001, 0.6:
                out = self.fresh()
                process = subprocess.Popen(command(out), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                           env=ENVIRONMENT)
                while process.poll() is None and size_of(out) < total * share:
                    time.sleep(0.001)
                process.kill()
                process.wait(timeout=1200)
                self.assert_whole(out, killed=True)
        self.for_each_output(check)


if __name__ == "__main__":
    unittest.main()
