"""The queries of docs/sql.md, as they stand there, on DuckDB over a table of morvale ab.

Environment: MORVALE_PROGRAM, MORVALE_LIBRARY, MORVALE_CHANGED_LIBRARY_FILE as for ab_test.py; MORVALE_SQL_FOLDER, where
DuckDB is fetched to, once. Skipped where it cannot be, unless MORVALE_REQUIRE_NETWORK=1.
"""
import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

HERE = pathlib.Path(__file__).resolve().parent
PAGE = HERE.parents[1] / "docs/sql.md"


def fetch(folder):
    folder.mkdir(parents=True, exist_ok=True)
    lock = (HERE / "sql/package-lock.json").read_bytes()
    fetched = folder / "node_modules/fetched"
    for file in (HERE / "sql").iterdir():
        shutil.copy(file, folder)
    if not fetched.exists() or fetched.read_bytes() != lock:
        # Not "ci", which wants other systems' builds of DuckDB in the list of versions too.
        subprocess.run(["npm", "install", "--no-audit", "--no-fund"], cwd=folder, check=True, capture_output=True)
        fetched.write_bytes(lock)


class Sql(unittest.TestCase):
    def test_every_query(self):
        modules = pathlib.Path(os.environ["MORVALE_SQL_FOLDER"])
        try:
            fetch(modules)
        except (OSError, subprocess.CalledProcessError) as error:
            self.assertFalse(os.environ.get("MORVALE_REQUIRE_NETWORK"), error)
            self.skipTest("DuckDB cannot be fetched")
        program = os.environ["MORVALE_PROGRAM"]
        with tempfile.TemporaryDirectory() as folder:
            for name in ("one", "two"):
                subprocess.run([program, "scene", "--out", f"{folder}/{name}", "--frames", "3", "--size", "160x120"],
                               check=True, capture_output=True)
            with open(f"{folder}/all.csv", "w") as table:
                subprocess.run([program, "ab", "--format", "csv", "--old", os.environ["MORVALE_LIBRARY"], "--new",
                                os.environ["MORVALE_CHANGED_LIBRARY_FILE"], f"{folder}/one", f"{folder}/two", "nothing"],
                               stdout=table, stderr=subprocess.DEVNULL, check=False)
            queries = re.findall(r"```sql\n(.*?)```", PAGE.read_text(), re.DOTALL)
            done = subprocess.run(["node", modules / "queries.mjs"], input=json.dumps(queries), cwd=folder, text=True,
                                  capture_output=True, check=False)
        self.assertEqual(done.returncode, 0, done.stderr)
        verdicts, fields, worst, first, colours, failed = json.loads(done.stdout)
        self.assertEqual([(row["verdict"], int(row["recordings"])) for row in verdicts], [("changed", 2), ("failed", 1)])
        self.assertEqual([(row["field"], int(row["frames"]), int(row["largest"])) for row in fields], [("humanRatio", 6, 5)])
        self.assertEqual([row["percent"] for row in worst], [100, 100])
        self.assertEqual([row["first_field"] for row in first], ["humanRatio"])
        self.assertEqual(colours, [])
        self.assertIn("cannot be read", failed[0]["failure"])


if __name__ == "__main__":
    unittest.main()
