"""`morvale convert` and `morvale compare` from outside: bytes, files, figures, complaints.

Environment: MORVALE_PROGRAM, the program.
"""
import json
import math
import os
import pathlib
import re
import struct
import subprocess
import tempfile
import unittest
import zlib

PROGRAM = os.environ.get("MORVALE_PROGRAM", "build/release/tools/morvale/morvale")
EXPORTS = pathlib.Path(__file__).resolve().parents[1] / "package/exports.txt"


def morvale(*arguments):
    return subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, text=True, timeout=1200)


def png(width, height, pixel):
    """A colour PNG file; pixel(x, y) gives R, G, B."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    rows = b"".join(b"\0" + b"".join(bytes(pixel(x, y)) for x in range(width)) for y in range(height))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def bmp_rows(content):
    """The rows of an uncompressed 24-bit BMP file, top first: lists of (B, G, R)."""
    offset, width, height, bits = struct.unpack_from("<I4xii2xH", content, 10)
    assert bits == 24 and height > 0
    stride = (3 * width + 3) // 4 * 4
    return [[tuple(content[offset + y * stride + 3 * x:][:3]) for x in range(width)]
            for y in range(height - 1, -1, -1)]


class InFolder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def file(self, name, content=b""):
        path = self.folder / name
        path.write_bytes(bytes(content))
        return path

    def convert(self, *arguments):
        done = morvale("convert", *arguments)
        self.assertEqual((done.returncode, done.stdout), (0, ""), (arguments, done.stderr))
        return done.stderr

    def assert_refused(self, arguments, *fragments):
        before = sorted(self.folder.iterdir())
        done = morvale(*arguments)
        self.assertEqual((done.returncode, done.stdout), (2, ""), (arguments, done.stderr))
        self.assertRegex(done.stderr, r"\Amorvale: [^\n]+\.\n\Z")
        for fragment in fragments:
            self.assertIn(str(fragment), done.stderr)
        self.assertEqual(sorted(self.folder.iterdir()), before, f"{arguments}: left a file")


class List(InFolder):
    def test_names_every_exported_kernel(self):
        exported = re.findall(r"^((?:NV21to|NV12to|RGBto|BGR|resize_|rotate_|GaussianBlur_)\w*)\(",
                              EXPORTS.read_text(), re.M)
        listed = json.loads(morvale("convert", "--list", "--json").stdout)
        self.assertEqual(sorted(kernel["kernel"] for kernel in listed), sorted(exported))
        table = morvale("convert", "--list").stdout
        for kernel in listed:
            self.assertRegex(table, rf"(?m)^{kernel['kernel']} +{kernel['takes']} +{kernel['gives']} ")

    def test_every_kernel_runs_from_a_photograph_or_a_raw_file(self):
        values = {"--mode": 0, "--factor": 3, "--to": "21x11", "--sigma": 1.5}
        # Colours change only between 2 x 2 blocks; the odd last column and row belong to no block.
        photo = self.file("photo.png", png(27, 19, lambda x, y: (9 * (x // 2), 200 - y // 2, 77)))
        for kernel in json.loads(morvale("convert", "--list", "--json").stdout):
            with self.subTest(kernel["kernel"]):
                raw = {"NV21": ".nv21", "RGB": ".rgb", "BGR": ".bgr", "planar BGR": ".bgrp", "Y": ".y",
                       "HSV": ".hsv"}[kernel["gives"]]
                flags = [text for flag in kernel["flags"] if flag["required"]
                         for text in (flag["name"], values[flag["name"]])]
                self.convert(kernel["kernel"], *flags, photo, self.folder / ("out_{size}" + raw))
                out, = self.folder.glob("out_*")
                if raw != ".hsv":
                    self.convert(kernel["kernel"], *flags, photo, self.folder / "shown.png")
                out.unlink()


class Kernels(InFolder):
    def check(self, kernel, source, expected, *flags):
        """source and expected: a file name with a size, and bytes."""
        target = self.folder / ("out_{size}" + pathlib.Path(expected[0]).suffix)
        note = self.convert(kernel, *flags, self.file(*source), target)
        size = re.search(r"_(\d+x\d+)", expected[0])[1]
        out = self.folder / str(target).replace("{size}", size)
        self.assertTrue(out.exists(), note)
        self.assertIn(f"of {size}.", note)
        self.assertEqual(list(out.read_bytes()), list(expected[1]))

    def test_each_layout(self):
        self.check("rotate_NV21", ("in_4x2.nv21", [1, 2, 3, 4, 5, 6, 7, 8, 10, 11, 20, 21]),
                   ("_2x4.nv21", [4, 8, 3, 7, 2, 6, 1, 5, 20, 21, 10, 11]), "--mode", 2)
        # This one prints a line on standard output; `convert` asserts that it is not seen.
        self.check("rotate_y_opt", ("in_3x2.y", [1, 2, 3, 4, 5, 6]), ("_3x2.y", [6, 5, 4, 3, 2, 1]),
                   "--mode", 1)
        red = ("in_4x2.nv21", [100] * 8 + [228, 128] * 2)
        # The kernels convert blocks of eight columns whatever the width: only the picture may arrive.
        self.check("NV21toBGR", red, ("_4x2.bgr", [100, 30, 237] * 8))
        self.check("NV21toBGR_planar", red, ("_4x2.bgrp", [100] * 8 + [30] * 8 + [237] * 8))
        self.check("NV21toRGB", red, ("_4x2.rgb", [237, 30, 100] * 8))
        self.check("BGR2HSV", ("in_3x1.bgr", [255, 0, 0, 0, 255, 255, 8, 8, 8]),
                   ("_3x1.hsv", struct.pack("9f", 240, 255, 255, 60, 255, 255, 0, 0, 8)))

    def test_what_a_kernel_leaves_or_lacks(self):
        # Nothing shrinks to a chroma row here: what the kernel leaves is neutral.
        self.check("resize_NV21_2x_down", ("in_4x2.nv21", range(12)), ("_2x1.nv21", [0, 2, 128, 128]))
        # Below the last row lies the last row: the lower half of the result does not fade into anything.
        self.check("resize_Y_1", ("in_1x2.y", [40, 80]), ("_1x4.y", [40, 60, 80, 80]), "--to", "1x4")
        self.check("resize_y_8x_up_RR_hori", ("in_3x3.y", [9, 9, 9, 9, 0, 255, 9, 9, 9]),
                   ("_16x1.y", [0, 31, 63, 95, 127, 159, 191, 223] + [255] * 8), "--region", "1,1,2,1")
        rows = [list(range(10, 18)), list(range(20, 28))]
        wide = [v for row in rows for luma in row + row[:3:-1] + [0, 0] for v in [luma] * 3]
        self.check("NV21toBGR_pad", ("in_8x2.nv21", rows[0] + rows[1] + [128] * 8), ("_14x2.bgr", wide),
                   "--right-margin", 4, "--out-width", 14)

    def test_blur_in_marked_cells(self):
        source = ("in_16x1.y", [0] * 8 + [100] + [0] * 7)
        # Three equal weights of 85, 86, 85 in 256; the pixel left of the marked cell is copied.
        expected = ("_16x1.y", [0] * 8 + [34, 33] + [0] * 6)
        flags = ["--sigma", 1000, "--radius", 1, "--grid"]
        raw = self.file("cells.bin", b"\0\1" + bytes(598))
        shown = self.file("cells.png", png(2, 1, lambda x, y: (x, 0, 0)))
        for grid in [raw, shown]:
            self.check("GaussianBlur_Grid_Hori", source, expected, *flags, grid)
        everywhere = ("_16x1.y", [0] * 7 + [33, 34, 33] + [0] * 6)
        self.check("GaussianBlur_Grid_Hori", source, everywhere, *flags[:4])

    def test_pictures_in_and_out(self):
        photo = self.file("photo.png", png(3, 2, lambda x, y: (200 + x, 100 + y, 50)))
        self.convert("BGRtoNV21", photo, self.folder / "whole_{size}.nv21")
        self.assertEqual((self.folder / "whole_3x2.nv21").stat().st_size, 9)
        self.convert("resize_NV21_2x_up", photo, self.folder / "cropped_{size}.nv21")
        self.assertTrue((self.folder / "cropped_4x4.nv21").exists())
        source = self.file("in_2x2.nv21", [100] * 4 + [228, 128])
        for kernel, flags in [("NV21toRGB", []), ("NV21toBGR", []), ("NV21toBGR_planar", []),
                              ("rotate_NV21", ["--mode", 1])]:
            with self.subTest(kernel):
                out = self.folder / "out.bmp"
                self.convert(kernel, *flags, source, out)
                self.assertEqual(bmp_rows(out.read_bytes()), [[(100, 30, 237)] * 2] * 2)
        self.convert("resize_y_2x_up", "--size", "1x1", self.file("grey.y", [77]), self.folder / "grey.png")
        same = morvale("compare", self.folder / "grey.png", self.file("grey_2x2.y", [77] * 4))
        self.assertEqual(same.returncode, 0, same.stdout + same.stderr)

    def test_a_photograph_survives_the_camera_format(self):
        photo = self.file("photo.png", png(
            48, 32, lambda x, y: (5 * (x // 2), 7 * (y // 2), 200 - 4 * (x // 2))))
        self.convert("BGRtoNV21", photo, self.folder / "frame_{size}.nv21")
        self.convert("NV21toBGR", self.folder / "frame_48x32.nv21", self.folder / "again.png")
        done = morvale("compare", "--json", photo, self.folder / "again.png")
        report = json.loads(done.stdout)
        self.assertEqual([plane["plane"] for plane in report["planes"]], ["R", "G", "B"])
        self.assertEqual(done.returncode, 1)
        # Blue loses most: the two ways weigh its chroma differently, by a fortieth.
        self.assertTrue(all(plane["psnr"] > 38 and plane["ssim"] > 0.99 and plane["maxDifference"] <= 6
                            for plane in report["planes"]), report)
        self.assertEqual(morvale("compare", "--tolerance", 6, photo, self.folder / "again.png").returncode, 0)


class Compare(InFolder):
    def report(self, a, b, *flags):
        done = morvale("compare", "--json", *flags, a, b)
        self.assertEqual(done.stderr, "")
        return done.returncode, json.loads(done.stdout)

    def test_figures_of_planes(self):
        luma, chroma = [50] * 8, [60, 70, 80, 90]
        a = self.file("a_4x2.nv21", luma + chroma)
        status, report = self.report(a, self.file("b_4x2.nv21", [50] * 7 + [60] + [60, 74, 80, 87]))
        y, v, u = report["planes"]
        self.assertEqual((status, report["identical"]), (1, False))
        keys = ["plane", "width", "height", "maxDifference", "differing", "samples"]
        self.assertEqual([tuple(p[key] for key in keys) for p in [y, v, u]],
                         [("Y", 4, 2, 10, 1, 8), ("V", 2, 1, 0, 0, 2), ("U", 2, 1, 4, 2, 2)])
        self.assertAlmostEqual(y["psnr"], 37.162, 3)  # 10 log10(65025 / 12.5)
        self.assertAlmostEqual(u["psnr"], 37.162, 3)  # mean of 16 and 9: 12.5 as well
        self.assertEqual((v["psnr"], v["ssim"]), (None, 1))
        self.assertAlmostEqual(report["all"]["psnr"], 10 * math.log10(65025 / (125 / 12)), 9)
        table = morvale("compare", a, self.folder / "b_4x2.nv21").stdout
        self.assertRegex(table, r"(?m)^V +2x1 +inf +1\.000000 +0  0 of 2$")
        nv12 = self.file("c_4x2.nv12", luma + [70, 60, 90, 80])
        self.assertEqual(self.report(a, nv12)[0], 0)

    def test_every_byte_of_an_odd_frame_counts(self):
        a = self.file("a_3x3.nv21", bytes(15))
        for at in range(15):
            b = self.file("b_3x3.nv21", [at == k for k in range(15)])
            status, report = self.report(a, b)
            self.assertEqual((status, report["all"]["differing"], report["all"]["samples"]), (1, 1, 15))
            self.assertEqual(self.report(a, b, "--tolerance", 1)[0], 0)

    def test_structural_similarity(self):
        flat = [self.file(f"flat{v}_16x16.y", [v] * 256) for v in (100, 110)]
        self.assertAlmostEqual(self.report(*flat)[1]["planes"][0]["ssim"], 22006.5025 / 22106.5025, 9)
        # One window: the formula, weighted sums around the centre.
        a, b = [[(37 * k * k + step * k) % 256 for k in range(121)] for step in (11, 29)]
        weights = [math.exp(-((k % 11 - 5) ** 2 + (k // 11 - 5) ** 2) / 4.5) for k in range(121)]

        def mean(values):
            return sum(w * v for w, v in zip(weights, values)) / sum(weights)
        ma, mb = mean(a), mean(b)
        va, vb = mean([(x - ma) ** 2 for x in a]), mean([(x - mb) ** 2 for x in b])
        cov = mean([(x - ma) * (y - mb) for x, y in zip(a, b)])
        expected = ((2 * ma * mb + 6.5025) * (2 * cov + 58.5225) /
                    ((ma * ma + mb * mb + 6.5025) * (va + vb + 58.5225)))
        found = self.report(self.file("a_11x11.y", a), self.file("b_11x11.y", b))[1]["planes"][0]["ssim"]
        self.assertAlmostEqual(found, expected, 9)

    def test_floats(self):
        a = self.file("a_1x1.hsv", struct.pack("3f", 359.5, 1, 2))
        status, report = self.report(a, self.file("b_1x1.hsv", struct.pack("3f", 359.5, 1.25, math.nan)))
        h, s, v = report["planes"]
        self.assertEqual((status, h["psnr"], s["maxDifference"], v["maxDifference"], v["ssim"]),
                         (1, None, 0.25, None, None))
        self.assertEqual(self.report(a, self.folder / "b_1x1.hsv", "--tolerance", 1)[0], 1)
        self.assertEqual(self.report(self.folder / "b_1x1.hsv", self.folder / "b_1x1.hsv")[0], 0)

    def test_refusals(self):
        frame = self.file("a_4x2.nv21", bytes(12))
        photo = self.file("photo.png", png(4, 2, lambda x, y: (1, 2, 3)))
        for other, fragment in [(self.file("b_2x4.nv21", bytes(12)), "4x2"), (photo, "R, G, B"),
                                (self.file("c.nv21", bytes(12)), "--size"),
                                (self.folder / "none.png", "none.png"),
                                (self.file("d_4x2.nv21", bytes(11)), "12")]:
            self.assert_refused(["compare", frame, other], fragment)
        self.assert_refused(["compare", frame], "B is required")
        self.assert_refused(["compare", "--tolerance", "-1", frame, frame], "--tolerance")
        self.assertIn("Examples:", morvale("compare", "--help").stdout)


class Complaints(InFolder):
    def test_flags(self):
        plane, out = self.file("in_4x4.y", bytes(16)), self.folder / "out.y"
        frame, frame_out = self.file("in_4x4.nv21", bytes(24)), self.folder / "out.rgb"
        self.assert_refused(["convert"], "KERNEL")
        self.assert_refused(["convert", "rotate_NV22", frame, out], "rotate_NV22", "--list")
        self.assert_refused(["convert", "--list", "rotate_y"], "--list")
        for kernel, flags, fragment in [
                ("rotate_y", [], "--mode N"), ("rotate_y", ["--mode", "left"], "--mode"),
                ("resize_y_2x_up", ["--factor", 2], "takes no --factor"),
                ("resize_y", ["--factor", 65], "--factor"),
                ("resize_Y_1", ["--to", "0x4"], "--to"), ("resize_Y_1", ["--to", "4"], "--to"),
                ("resize_y_8x_up_RR_vert", ["--region", "0,3,4,2"], "4x4"),
                ("resize_y_8x_up_RR_vert", ["--region", "0,0,4,2,"], "X,Y,W,H"),
                ("resize_y_8x_up_RR_vert", ["--region", "0,-1,4,2"], "X,Y,W,H"),
                ("GaussianBlur_Grid_Vert", ["--sigma", 1, "--bits", 9], "--bits"),
                ("GaussianBlur_Grid_Vert", ["--sigma", 1, "--grid", plane], "600"),
                ("GaussianBlur_Grid_Vert", ["--sigma", 1, "--grid", "/none"], "/none"),
                ("resize_y_2x_up", ["--size", "4x5"], "20"), ("resize_y_2x_up", ["--sharpen"], "--sharpen")]:
            with self.subTest(kernel=kernel, flags=flags):
                self.assert_refused(["convert", kernel, *flags, plane, out], fragment)
        for flags, fragment in [(["--right-margin", 5], "outside"), (["--right-margin", -9], "outside"),
                                (["--right-margin", 2, "--out-width", 5], "at least 6"),
                                (["--bottom-margin", 2, "--out-height", 5], "at least 6")]:
            with self.subTest(flags=flags):
                self.assert_refused(["convert", "NV21toRGB_pad", *flags, frame, frame_out], fragment)

    def test_files(self):
        plane, out = self.file("in_4x4.y", bytes(16)), self.folder / "out.y"
        photo = self.file("photo.png", png(4, 4, lambda x, y: (1, 2, 3)))
        double = ["convert", "resize_y_2x_up"]
        for source, fragment in [(self.folder / "none.y", "none.y"), (self.folder, "not a file"),
                                 (self.file("nameless.y", bytes(16)), "--size"),
                                 (self.file("cut_4x4.y", bytes(15)), "16 bytes"),
                                 (self.file("big_0x4.y"), "0x4"),
                                 (self.file("wide_4x4_s8.y", bytes(32)), "rows of 8"),
                                 (self.file("in_4x4.rgb", bytes(48)), ".y or .gray"),
                                 (self.file("text.txt", b"text"), "text.txt"),
                                 (self.file("cut.png", photo.read_bytes()[:50]), "decoded")]:
            with self.subTest(source=source.name):
                self.assert_refused([*double, source, out], fragment)
        for target, fragment in [("out.nv21", ".y or .gray"), ("out", ".y or .gray"), ("out.txt", ".png"),
                                 ("none/out.y", "does not exist"), ("", "folder")]:
            with self.subTest(target=target):
                self.assert_refused([*double, plane, self.folder / target], fragment)
        self.assert_refused(["convert", "BGR2HSV", photo, self.folder / "out.png"], ".hsv")
        self.assert_refused([*double, plane], "OUT")
        dot = self.file("dot_1x1.nv21", bytes(2))
        self.assert_refused(["convert", "resize_NV21_2x_down", dot, self.folder / "out.nv21"], "empty")
        self.assert_refused(["convert", "resize_y", "--factor", 64, "--size", "1024x1024", photo, out],
                            "2 GiB")
        self.assertIn("Examples:", morvale("convert", "--help").stdout)


if __name__ == "__main__":
    unittest.main()
