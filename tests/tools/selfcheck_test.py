"""`morvale selfcheck` from outside, and what `morvale doctor` says of the same check.

Environment: MORVALE_PROGRAM, the program; MORVALE_FAULTY_KERNEL, a shared object whose BGR2GRAY rounds where the
library's truncates.
"""
import json
import os
import subprocess
import unittest

PROGRAM = os.environ.get("MORVALE_PROGRAM", "build/release/tools/morvale/morvale")
FAULTY = os.environ.get("MORVALE_FAULTY_KERNEL", "")


def morvale(*arguments, **environment):
    return subprocess.run([PROGRAM, *arguments], capture_output=True, text=True, timeout=1200,
                          env={**os.environ, **environment})


class Selfcheck(unittest.TestCase):
    def test_a_sound_library_passes_and_is_silent(self):
        for environment in ({}, {"MORVALE_KERNELS": "portable"}):
            done = morvale("selfcheck", **environment)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertRegex(done.stdout, r"\Apassed with the kernels " + environment.get("MORVALE_KERNELS", r"\w+") + r"\n\Z")

    @unittest.skipUnless(FAULTY, "needs MORVALE_FAULTY_KERNEL")
    def test_a_kernel_that_rounds_is_named(self):
        done = morvale("selfcheck", LD_PRELOAD=FAULTY)
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertRegex(done.stderr, r"\Amorvale: the library is not what it must be: with the kernels \w+, BGR2GRAY differs.\n\Z")
        doctor = morvale("doctor", LD_PRELOAD=FAULTY)
        self.assertEqual(doctor.returncode, 1)
        self.assertRegex(doctor.stdout, r"\nself-check +FAILED: BGR2GRAY differs\n\Z")
        told = json.loads(morvale("doctor", "--json", LD_PRELOAD=FAULTY).stdout)
        self.assertEqual((told["self-check"], told["differs"]), (False, "BGR2GRAY"))


if __name__ == "__main__":
    unittest.main()
