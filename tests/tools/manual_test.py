"""`morvale manual` and `morvale completion`: both say what the helps say, and the shells can use it.

Environment: MORVALE_PROGRAM, the program. What needs groff or zsh is skipped where they are missing.
"""
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

PROGRAM = os.environ.get("MORVALE_PROGRAM", "build/release/tools/morvale/morvale")
SOURCES = pathlib.Path(__file__).resolve().parents[2]


def run(*command, cwd=None):
    done = subprocess.run(command, capture_output=True, text=True, timeout=1200, cwd=cwd)
    assert (done.returncode, done.stderr) == (0, ""), (command, done.returncode, done.stderr)
    return done.stdout


def morvale(*arguments):
    return run(PROGRAM, *arguments)


COMMANDS = re.findall(r"^  (\w+) +\w", morvale("--help"), re.M)
HELPS = {command: morvale(command, "--help") for command in COMMANDS}
FLAGS = {command: {flag for names in re.findall(r"^  (-\S+)", help_text, re.M) for flag in names.split(",")}
         for command, help_text in HELPS.items()}


def manual_sections():
    """The page's sections; what roff writes as an escape is a blank here, save hyphens and fonts."""
    page = re.sub(r"\\f.", "", morvale("manual")).replace("\\-", "-")
    page = re.sub(r"\\(e|&|\(..|\[.*?\])", " ", page)
    return dict(re.findall(r'^\.SH "(.*)"\n((?:(?!\.SH).*\n)*)', page, re.M))


def words(text):
    """What is left when the layout is gone."""
    return " ".join(re.findall(r"\w+", text))


class Manual(unittest.TestCase):
    def test_tells_all_that_the_helps_tell(self):
        sections = manual_sections()
        self.assertIn("analyze", COMMANDS)
        for command in COMMANDS:
            with self.subTest(command=command):
                self.assertRegex(sections["COMMANDS"], rf"(?m)^{command}$")
                text = sections[f"morvale {command}"]
                tags = {flag for tag in re.findall(r"^\.TP\n(-.*)", text, re.M)
                        for flag in re.findall(r"(?<!\S)-[-\w]+", tag)}
                self.assertEqual(tags, FLAGS[command])
                told = words(re.sub(r"(?m)^\.(?!SS).*|^\.SS", "", text))
                for paragraph in re.split(r"\n\n+", HELPS[command]):
                    if not paragraph.lstrip().startswith(("Usage:", "Options:", "Positionals:")):
                        self.assertIn(words(paragraph), told)

    def test_environment_is_complete(self):
        listed = set(re.findall(r"^\.TP\n(\w+)$", manual_sections()["ENVIRONMENT"], re.M))
        read = set()
        for folder in ["src", "workstation", "tools"]:
            for source in (SOURCES / folder).rglob("*.cpp"):
                read |= set(re.findall(r'\("((?:MORVALE|VEXA|XDG|PERSIST_MORVALE)_[A-Z_]+)"', source.read_text()))
        self.assertIn("VEXA_ENGINE", read)
        self.assertEqual(listed - read, set())
        self.assertEqual(read - listed, set())

    @unittest.skipUnless(shutil.which("groff"), "needs groff")
    def test_formats_without_a_warning(self):
        with tempfile.TemporaryDirectory() as folder:
            page = pathlib.Path(folder, "morvale.1")
            page.write_text(morvale("manual"))
            text = re.sub("\x1b\\[[0-9;]*m|.\b", "", run("groff", "-man", "-Tutf8", "-ww", "-rLL=78n", str(page)))
        # What roff takes for commands, or prints as letters that no shell understands, arrives as it was typed.
        for line in ["out_{size}.nv21", "'photo_{size}.nv21'", "~/.local/share/man/man1/morvale.1", "10 log10(255^2 /",
                     '[{"x": 100, "y": 80, "w": 120, "h": 120}]', "--region 10,20,32,16 \\\n", "exactly `width` bytes"]:
            self.assertIn(line, text)
        too_long = [line for line in text.splitlines() if len(line) > 78 and "{" not in line]
        self.assertEqual(too_long, [], "commands are broken to fit a terminal of 80 columns")


class Output(unittest.TestCase):
    def test_what_cannot_be_written_is_a_failure(self):
        """1, but 2 where 1 means "different"."""
        with tempfile.TemporaryDirectory() as folder:
            records = pathlib.Path(folder, "records")
            records.write_bytes(bytes(288))
            plane = pathlib.Path(folder, "a_1x1.y")
            plane.write_bytes(bytes(1))
            for status, *arguments in [(1, "manual"), (1, "completion", "zsh"), (1, "--help"), (1, "--version"),
                                       (1, "convert", "--list"), (1, "convert", "--help"), (1, "inspect", records),
                                       (1, "inspect", "--format", "json", records), (1, "doctor"),
                                       (1, "doctor", "--json"), (2, "diff", "--help"), (2, "diff", records, records),
                                       (2, "compare", plane, plane), (2, "compare", "--json", plane, plane)]:
                with self.subTest(arguments=arguments), open("/dev/full", "w") as full:
                    done = subprocess.run([PROGRAM, *arguments], stdout=full, stderr=subprocess.PIPE, timeout=1200)
                    self.assertEqual((done.returncode, done.stderr),
                                     (status, b"morvale: standard output cannot be written.\n"))

    def test_a_nearly_right_command_is_guessed(self):
        done = subprocess.run([PROGRAM, "analyse", "x"], capture_output=True, timeout=1200)
        self.assertEqual((done.returncode, done.stderr), (2, b"morvale: there is no command 'analyse'; did you mean "
                                                             b"analyze? morvale --help lists them.\n"))


class Bash(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "script").write_text(morvale("completion", "bash"))
        (self.folder / "two words.jpg").touch()
        (self.folder / "street.png").touch()
        (self.folder / "bundle").mkdir()

    def complete(self, *line):
        """What bash offers in place of the last word of the line, as bash has cut it."""
        script = 'source ./script; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _morvale; printf "%s\\n" "${COMPREPLY[@]}"'
        return run("bash", "-uc", script, "bash", "morvale", *line, cwd=self.folder).splitlines()

    def test_commands_flags_and_values(self):
        self.assertEqual(self.complete(""), COMMANDS)
        self.assertEqual(self.complete("ana"), ["analyze"])
        self.assertEqual(self.complete("--v"), ["--version"])
        for command in COMMANDS:
            self.assertEqual(set(self.complete(command, "-")), FLAGS[command], command)
        for line, expected in [(["analyze", "--cam"], ["--camera"]),
                                (["analyze", "--camera", ""], ["front", "back"]),
                                (["analyze", "--camera", "b"], ["back"]),
                                (["analyze", "--camera", "="], ["front", "back"]),
                                (["analyze", "--camera", "=", "f"], ["front"]),
                                (["analyze", "--camera=f"], ["--camera=front"]),
                                (["analyze", "--camera", "back", "--format", "t"], ["table"]),
                                (["analyze", "street.png", "--verbose", "--cam"], ["--camera"]),
                                (["convert", "--mode", "2", "rotate_y_"], ["rotate_y_opt"]),
                                (["completion", ""], ["bash", "zsh"]),
                                (["scene", "--seed", ""], [""]),
                                (["nothing", "-"], [""])]:
            with self.subTest(line=line):
                self.assertEqual(self.complete(*line), expected)

    def test_names_on_the_disk(self):
        everything = {"script", "two words.jpg", "street.png", "bundle"}
        for line, expected in [(["analyze", ""], everything),
                                (["analyze", "--verbose", "street.png", ""], everything),
                                (["analyze", "--out", ""], {"bundle"}),
                                (["analyze", "--out", "=", "bu"], {"bundle"}),
                                (["analyze", "--faces", ""], {"auto", "none"} | everything),
                                (["analyze", "two\\ w"], {"two words.jpg"}),
                                (["analyze", '"two w'], {"two words.jpg"}),
                                (["convert", "rotate_y", ""], everything),
                                (["convert", "rotate_y", "--mode", "=", "2", "--grid", "street.png", "str"],
                                 {"street.png"}),
                                (["completion", "bash", ""], {""})]:
            with self.subTest(line=line):
                self.assertEqual(set(self.complete(*line)), expected)


class Zsh(unittest.TestCase):
    def test_names_every_command_and_flag(self):
        script = morvale("completion", "zsh")
        self.assertTrue(script.startswith("#compdef morvale\n"))
        cases = dict(re.findall(r"^ {8}(\w+)\)\n((?:(?! {10};;).*\n)*)", script, re.M))
        self.assertEqual(list(cases), COMMANDS)
        for command in COMMANDS:
            named = set(re.findall(r"^ +'(?:\(.*?\)|\*)(-[-\w]+)", cases[command], re.M))
            self.assertEqual(named, FLAGS[command], command)

    @unittest.skipUnless(shutil.which("zsh"), "needs zsh")
    def test_parses(self):
        with tempfile.TemporaryDirectory() as folder:
            script = pathlib.Path(folder, "_morvale")
            script.write_text(morvale("completion", "zsh"))
            self.assertEqual(run("zsh", "-n", str(script)), "")


if __name__ == "__main__":
    unittest.main()
