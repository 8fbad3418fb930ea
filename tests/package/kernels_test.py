#!/usr/bin/python3 -B
"""libmorvale_kernels.so as other languages meet it: its names, and calls from Python by ctypes.

usage: kernels_test.py LIBRARY HEADER NM VERSION ASKS_ENVIRONMENT [EMULATED]    EMULATED: it cannot be loaded here
"""

import ctypes
import os
import pathlib
import re
import subprocess
import sys
import unittest

LIBRARY, HEADER, NM, VERSION, ASKS_ENVIRONMENT, *EMULATED = sys.argv[1:]
OK, BAD_SIZE, SOURCE_TOO_SMALL, DESTINATION_TOO_SMALL = range(4)


def names(*flags):
    """What the dynamic symbol table lists: [(kind, name)]."""
    listed = subprocess.run([NM, "-D", *flags, LIBRARY], capture_output=True, text=True, check=True).stdout
    return [line.split()[-2:] for line in listed.splitlines()]


class Names(unittest.TestCase):
    def test_exactly_the_functions_of_the_header_are_exported(self):
        declared = re.findall(r"^MORVALE_API [\w *]+?(morvale_\w+)\(", pathlib.Path(HEADER).read_text(), re.M)
        self.assertGreater(len(declared), 30)
        self.assertEqual(sorted(name for _, name in names("--defined-only")), sorted(declared))

    def test_nothing_is_needed_but_the_c_and_cpp_libraries(self):
        self.assertEqual([name for kind, name in names("--undefined-only") if kind == "U" and "@" not in name], [])


@unittest.skipIf(EMULATED, "the library is another processor's")
class Ctypes(unittest.TestCase):
    def setUp(self):
        self.library = ctypes.CDLL(LIBRARY)
        for name in ("status_text", "kernels_version", "kernels_set"):
            self.library["morvale_" + name].restype = ctypes.c_char_p

    def rotate(self, source, reach, target, size):
        return self.library.morvale_rotate_y(source, ctypes.c_size_t(reach), target, ctypes.c_size_t(size), 3, 1, 2)

    def test_a_kernel_runs_on_buffers_of_python(self):
        target = ctypes.create_string_buffer(b"...", 3)
        self.assertEqual(self.rotate(b"abc", 2, target, 3), SOURCE_TOO_SMALL)
        self.assertEqual(self.rotate(b"abc", 3, target, 2), DESTINATION_TOO_SMALL)
        self.assertEqual(self.rotate(None, 3, target, 3), SOURCE_TOO_SMALL)
        self.assertEqual(target.raw, b"...")
        self.assertEqual(self.rotate(b"abc", 3, target, 3), OK)
        self.assertEqual(target.raw, b"cba")

    def test_every_status_has_a_text_and_other_numbers_too(self):
        texts = [self.library.morvale_status_text(status) for status in (OK, BAD_SIZE, SOURCE_TOO_SMALL,
                                                                         DESTINATION_TOO_SMALL, 4, -1)]
        self.assertTrue(all(text.endswith(b".") for text in texts))
        self.assertEqual(len(set(texts)), 5)

    def test_the_version_is_the_projects(self):
        self.assertEqual(self.library.morvale_kernels_version().decode(), VERSION)

    def test_the_environment_chooses_the_set_where_it_is_asked(self):
        def in_use(wish):
            code = ("import ctypes; ask = ctypes.CDLL(%r).morvale_kernels_set; ask.restype = ctypes.c_char_p; "
                    "print(ask().decode())" % LIBRARY)
            return subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True,
                                  env={**os.environ, "MORVALE_KERNELS": wish}).stdout.strip()
        best = in_use("")
        self.assertIn(best, ("portable", "avx2", "avx512", "neon"))
        self.assertEqual(in_use("portable"), "portable" if ASKS_ENVIRONMENT == "ON" else best)
        self.assertEqual(in_use("none"), best)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
