"""The notebook of the documents runs from its first cell to its last, and shows what it says.

Environment: PYTHONPATH, where the package lies; MORVALE_PROGRAM, the program; MORVALE_PHOTO_DIR and MORVALE_MODEL_DIR,
photographs and the network (it is skipped without). MORVALE_REQUIRE_NETWORK=1 makes their absence a failure.
"""
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

NOTEBOOK = pathlib.Path(__file__).resolve().parents[2] / "docs/notebooks/morvale.ipynb"
PHOTO = pathlib.Path(os.environ.get("MORVALE_PHOTO_DIR", "/nonexistent"), "astronaut.png")
MODELS = pathlib.Path(os.environ.get("MORVALE_MODEL_DIR", "/nonexistent"))


def outputs(notebook):
    return [output.get("data", {}) for cell in json.loads(notebook.read_text())["cells"] for output in cell.get("outputs", [])]


class Notebook(unittest.TestCase):
    def test_every_cell_runs(self):
        if not (PHOTO.exists() and any(MODELS.glob("*.onnx"))):
            self.assertNotEqual(os.environ.get("MORVALE_REQUIRE_NETWORK"), "1", "no photograph or no network")
            self.skipTest("needs a photograph and the network")
        with tempfile.TemporaryDirectory() as folder:
            homes = {name: folder for name in ("JUPYTER_RUNTIME_DIR", "IPYTHONDIR", "MPLCONFIGDIR")}
            done = subprocess.run([sys.executable, "-m", "nbconvert", "--to", "notebook", "--execute", "--output-dir", folder,
                                   NOTEBOOK], capture_output=True, text=True, env={**os.environ, **homes})
            self.assertEqual(done.returncode, 0, done.stderr)
            shown = outputs(pathlib.Path(folder, NOTEBOOK.name))
        self.assertEqual(sum("image/png" in output for output in shown), 4)
        results = [text for text in ("".join(output.get("text/html", "")) for output in shown) if "data:image/png" in text]
        self.assertEqual(len(results), 2, "an analysis and a replay")

    def test_it_is_kept_without_its_outputs(self):
        self.assertEqual(outputs(NOTEBOOK), [])


if __name__ == "__main__":
    unittest.main()
