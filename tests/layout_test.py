#!/usr/bin/python3
"""The architecture page against the tree: who includes whom, and that every file and test it names is there."""

import pathlib
import re
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[1]
PAGE = (ROOT / "docs/architecture.md").read_text()
FILES = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=ROOT, capture_output=True, text=True).stdout.split("\n")
SOURCES = [name for name in FILES if name.endswith((".h", ".cpp")) and (ROOT / name).is_file()]
# Where an include in quotes is looked for, besides the folder of the file itself.
SEARCHED = ["src", "workstation", "tools/morvale", "tools", "tests", ""]


def allowed_includes():
    """{folder: what it may include} of the page's table; None where that is everything."""
    table = PAGE[PAGE.index("| Folder | Holds | May include |"):]
    rows = {}
    for line in table[:table.index("\n\n")].splitlines()[2:]:
        folders, _, may = [cell.strip() for cell in line.strip("|").split(" | ")]
        names = None if may.rstrip(" |") == "everything" else re.findall(r"`([^`]+)`", may)
        for folder in re.findall(r"`([^`]+/)`", folders):
            rows[folder] = names
    return rows


def includes(source):
    """The files of ours that a source includes, as paths from the root."""
    for bracket, name in re.findall(r'#include ([<"])([^>"]+)[>"]', (ROOT / source).read_text()):
        if bracket == "<":
            if name.startswith("morvale/"):
                yield "include/" + name
            continue
        beside = [str(pathlib.Path(source).parent)]
        for folder in SEARCHED + beside:
            path = f"{folder}/{name}".lstrip("/")
            if path in FILES:
                yield path
                break


def tests_of_the_tree():
    found = set()
    for name in FILES:
        if name.startswith("tests/") and name.endswith(".cpp") and (ROOT / name).is_file():
            found |= {".".join(pair) for pair in re.findall(r"\bTEST(?:_F|_P)?\((\w+), (\w+)\)",
                                                            (ROOT / name).read_text())}
    return found


@unittest.skipIf(FILES == [""], "needs the git checkout")
class Layout(unittest.TestCase):
    def test_includes_run_as_the_table_says(self):
        rows = allowed_includes()
        self.assertIn("src/kernels/", rows)
        for source in SOURCES:
            folder = max((row for row in rows if source.startswith(row)), key=len, default=None)
            self.assertIsNotNone(folder, f"{source} lies in no folder of the table")
            if rows[folder] is None:
                continue
            for included in includes(source):
                self.assertTrue(included.startswith((folder, *rows[folder])), f"{source} includes {included}")

    def test_public_headers_know_only_each_other(self):
        for source in SOURCES:
            if source.startswith("include/"):
                self.assertNotIn('#include "', (ROOT / source).read_text(), source)

    def test_every_named_test_exists(self):
        named = set(re.findall(r"`(\w+\.\w+)`", PAGE[PAGE.index("## Deliberate oddities"):]))
        self.assertGreater(len(named), 50)
        self.assertEqual(named - tests_of_the_tree(), set())

    def test_every_named_file_exists(self):
        pages = [name for name in FILES if name.endswith(".md")]
        self.assertIn("docs/architecture.md", pages)
        folders = {name.split("/")[0] for name in FILES if "/" in name}
        for page in pages:
            named = set(re.findall(r"`([\w-]+/[\w./-]*)`", (ROOT / page).read_text()))
            dead = {name for name in named if name.split("/")[0] in folders and not (ROOT / name).exists()}
            self.assertEqual(dead, set(), page)

    def test_the_readme_shows_the_folders_of_the_root(self):
        readme = (ROOT / "README.md").read_text()
        shown = set(re.findall(r"`([\w]+)/", readme[readme.index("## What is where"):readme.index("## Limits")]))
        there = {name.split("/")[0] for name in FILES if "/" in name and not name.startswith(".")}
        self.assertEqual(there - shown, set())


if __name__ == "__main__":
    unittest.main()
