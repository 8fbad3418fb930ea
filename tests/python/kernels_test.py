"""morvale.kernels: the kernels on arrays, held to `morvale convert`, and what becomes of arrays that they do not take.

Environment: PYTHONPATH, where the package lies; MORVALE_PROGRAM, the program.
"""
import ast
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import threading
import unittest

import numpy as np

from morvale import kernels

PROGRAM = os.environ["MORVALE_PROGRAM"]
STUBS = pathlib.Path(kernels.__file__).with_name("kernels.pyi")
ENDINGS = {"NV21": "nv21", "NV12": "nv12", "RGB": "rgb", "BGR": "bgr", "planar BGR": "bgrp", "Y": "y", "HSV": "hsv"}

noise = np.random.default_rng(20)


def picture(layout, width, height):
    shape = {"NV21": (height + (height + 1) // 2, width), "NV12": (height + (height + 1) // 2, width),
             "RGB": (height, width, 3), "BGR": (height, width, 3), "Y": (height, width)}[layout]
    return noise.integers(0, 256, shape, np.uint8)


def functions():
    """{the kernel's own name: the function}"""
    documented = {name: re.search(r"\(the kernel (\w+)\)", getattr(kernels, name).__doc__ or "") for name in dir(kernels)}
    return {kernel[1]: getattr(kernels, name) for name, kernel in documented.items() if kernel}


class Pixels(unittest.TestCase):
    FLAGS = {"--mode": (2, {"mode": 2}), "--factor": (3, {"factor": 3}), "--to": ("22x10", {"out_width": 22, "out_height": 10}),
             "--right-margin": (8, {"right_margin": 8}), "--bottom-margin": (2, {"bottom_margin": 2}),
             "--sigma": (1.5, {"weights": kernels.gaussian_weights(1.5, 5)})}

    def test_every_kernel_gives_what_the_program_gives(self):
        listed = json.loads(subprocess.run([PROGRAM, "convert", "--list", "--json"], capture_output=True, check=True).stdout)
        known = functions()
        self.assertEqual({*known} - {"GFilterCreation"}, {kernel["kernel"] for kernel in listed})
        for kernel in listed:
            function = known[kernel["kernel"]]
            # The first needs no room behind the picture; the second is odd.
            for width, height in [(16, 8), (13, 7)]:
                with self.subTest(kernel["kernel"], width=width):
                    given = [self.FLAGS[flag["name"]] + (flag["name"],) for flag in kernel["flags"] if flag["name"] in self.FLAGS]
                    source = picture(kernel["takes"], width, height)
                    size = (width, height) if kernel["takes"] in ("NV21", "NV12") else ()
                    values = {name: value for _, names, _ in given for name, value in names.items()}
                    expected = self.convert(kernel, source, f"{width}x{height}", [f"{flag}={text}" for text, _, flag in given])
                    result = function(source, *size, **values)
                    self.assertEqual(result.tobytes(), expected)
                    out = np.zeros_like(result)
                    self.assertIs(function(source, *size, **values, out=out), out)
                    self.assertEqual(result.dtype, np.float32 if kernel["gives"] == "HSV" else np.uint8)

    def convert(self, kernel, source, size, flags):
        with tempfile.TemporaryDirectory() as folder:
            given, result = (pathlib.Path(folder, f"{name}.{ENDINGS[kernel[name]]}") for name in ("takes", "gives"))
            given.write_bytes(source.tobytes())
            done = subprocess.run([PROGRAM, "convert", kernel["kernel"], "--size", size, *flags, given, result],
                                  capture_output=True)
            self.assertEqual(done.returncode, 0, done.stderr)
            return result.read_bytes()

    def test_rows_may_lie_apart_where_a_kernel_takes_a_stride(self):
        plane = picture("Y", 40, 30)
        part, room = plane[3:9, 5:17], np.zeros((6, 200), np.uint8)
        enlarged = kernels.resize_y_8x_up_rr_hori(part, out=room[:, 50:146])
        np.testing.assert_array_equal(enlarged, kernels.resize_y_8x_up_rr_hori(part.copy()))
        self.assertEqual((room[:, :50].any(), room[:, 146:].any()), (False, False))

    def test_a_grid_keeps_the_blur_to_its_cells(self):
        plane, weights = picture("Y", 32, 16), kernels.gaussian_weights(2, 6, 14)
        grid = np.zeros((2, kernels.GRID_COLUMNS), np.uint8)
        grid[1, 2] = 1
        blurred, all_of_it = (kernels.gaussian_blur_grid_vert(plane, weights, g, 14) for g in (grid, None))
        changed = np.zeros((16, 32), bool)
        changed[8:16, 16:24] = True
        np.testing.assert_array_equal(blurred, np.where(changed, all_of_it, plane))


class Refusals(unittest.TestCase):
    def test_an_array_that_is_not_as_it_must_be(self):
        nv21, rgb, y = picture("NV21", 16, 8), picture("RGB", 16, 8), picture("Y", 16, 8)
        weights = kernels.gaussian_weights(1, 2)
        astray = np.zeros(8 * 16 * 12 + 1, np.uint8)[1:].view(np.float32).reshape(8, 16, 3)
        locked = np.zeros((8, 16, 3), np.uint8)
        locked.flags.writeable = False
        k = kernels
        cases = [
            (k.nv21_to_rgb, (nv21.astype(float), 16, 8), "nv21 must be uint8 (12, 16)", "float64 (12, 16)"),
            (k.nv21_to_rgb, (nv21[:, ::2], 8, 8), "not contiguous"),
            (k.nv21_to_rgb, (nv21, 8, 16), "uint8 (24, 8)", "it is uint8 (12, 16)"),
            (k.nv21_to_rgb, (nv21.ravel()[:-1], 16, 8), "it is uint8 (191,)"),
            (k.nv21_to_rgb, (nv21, -16, 8), "(12, -16)"),
            (k.nv21_to_rgb, (nv21, 16, 8, np.zeros((8, 15, 3), np.uint8)), "out must be uint8 (8, 16, 3)"),
            (k.nv21_to_rgb, (nv21, 16, 8, locked), "read-only"),
            (k.rotate_y, (y, 0, y), "out must be uint8 (16, 8)"),
            (k.rotate_y, (y, 1, y), "must not share memory"),
            (k.rgb_to_nv21, (y,), "rgb must be uint8 (height, width, 3)"),
            (k.rotate_y, (rgb, 0), "y must be uint8 (height, width)"),
            (k.resize_y_8x_up_rr_vert, (y[:, ::-1],), "each row contiguous"),
            (k.resize_y_8x_up_rr_vert, (y[::-1],), "each row contiguous"),
            (k.resize_y_8x_up_rr_vert, (np.broadcast_to(y[0], (8, 16)),), "each row contiguous"),
            (k.bgr_to_hsv, (rgb, np.zeros((8, 16, 3))), "out must be float32"),
            (k.bgr_to_hsv, (rgb, np.zeros((8, 16, 3), ">f4")), "it is >f4"),
            (k.bgr_to_hsv, (rgb, astray), "not aligned"),
            (k.gaussian_blur_grid_hori, (y, weights.astype(int)), "weights must be uint16"),
            (k.gaussian_blur_grid_hori, (y, weights[:-1]), "an odd number"),
            (k.gaussian_blur_grid_hori, (y, weights, np.ones((1, 2), np.uint8)), "grid must be uint8 (1, 600)"),
            (k.gaussian_blur_grid_hori, (y, weights, None, 9), "outside what the kernel is made for", "bits are 8 or 14"),
            (k.resize_y, (y, 65), "outside what the kernel is made for", "The factor may be 1 to 64"),
            (k.nv21_to_rgb_padded, (nv21, 16, 8, 17), "Margins may be as large as"),
            (k.nv21_to_rgb, (np.zeros((10, 16), np.uint8), 16, 7), "nv21 must be uint8 (11, 16)"),
            (k.nv21_to_rgb, (nv21, 16, 1 << 40), "must fit in 32 bits"),
            (k.resize_nv21, (nv21, 16, 8, 1 << 24, 2), "outside what the kernel is made for"),
            (k.nv21_to_rgb_padded, (nv21, 16, 8, 8, 0, 20), "out_width must be 24 or more", "20"),
            (k.gaussian_weights, (1, 128), "radius of 0 to 127"),
        ]
        for function, arguments, *fragments in cases:
            with self.subTest(function.__name__, wanted=fragments):
                with self.assertRaises(ValueError) as refusal:
                    function(*arguments)
                for fragment in fragments:
                    self.assertIn(fragment, str(refusal.exception))
        with self.assertRaisesRegex(TypeError, "y must be a NumPy array, not list"):
            kernels.rotate_y([[1]], 0)
        with self.assertRaisesRegex(TypeError, r"^width, height .* whole numbers \(int\), not float$"):
            kernels.nv21_to_rgb(nv21, 32 / 2, 8)
        self.assertEqual(kernels.nv21_to_rgb(nv21, np.int64(16), height=8).shape, (8, 16, 3))

    def test_nothing_is_no_picture_to_fall_over(self):
        for shape in [(0, 0), (0, 7), (7, 0)]:
            self.assertEqual(kernels.resize_y_2x_up(np.zeros(shape, np.uint8)).shape, (2 * shape[0], 2 * shape[1]))
            self.assertEqual(kernels.resize_y_8x_up_rr_hori(np.zeros(shape, np.uint8)).shape, (shape[0], 8 * shape[1]))


class Calls(unittest.TestCase):
    def test_other_threads_run_meanwhile(self):
        ran, go, plane = [], threading.Lock(), np.zeros((1500, 2000), np.uint8)
        go.acquire()
        other = threading.Thread(target=lambda: (go.acquire(), ran.append(True)))
        other.start()
        usual = sys.getswitchinterval()
        sys.setswitchinterval(1000)  # only who gives the interpreter up lets another thread in
        try:
            go.release()
            for _ in range(100):
                if not ran:
                    kernels.resize_y_4x_up(plane)
            self.assertTrue(ran)
        finally:
            sys.setswitchinterval(usual)
            other.join()

    def test_the_stubs_have_every_function_with_its_arguments(self):
        stubs = {node.name: [argument.arg for argument in node.args.args]
                 for node in ast.parse(STUBS.read_text()).body if isinstance(node, ast.FunctionDef)}
        there = {name: re.findall(r"(\w+): ", getattr(kernels, name).__doc__.split(" -> ")[0])
                 for name in dir(kernels) if callable(getattr(kernels, name)) and not name.startswith("_")}
        self.assertEqual(stubs, there)


if __name__ == "__main__":
    unittest.main()
