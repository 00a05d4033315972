#!/usr/bin/python3
"""Plants faults, one at a time, in outputs and in the program: the check must notice each."""
import contextlib
import io
import shutil
import tempfile
import unittest
from pathlib import Path
from unittest.mock import patch

import check_corpus  # first: it says what is missing

import numpy as np
from PIL import Image, ImageCms

from picture import Canonical, upright

Y, X = np.mgrid[0:33, 0:47]  # no multiple of 8, width unlike height
COLOURS = np.stack([X * 5, Y * 7, (X + Y) * 3], axis=2).astype(np.uint8)  # unlike in x, y and channel
GRAY = COLOURS[:, :, 0] // 2 + COLOURS[:, :, 1] // 3
DEEP = GRAY.astype(np.uint16) * 251 + X.astype(np.uint16)
BILEVEL = GRAY * 37 % 101 > 50
FEW = COLOURS & 0xC0
CLEAR = np.dstack([COLOURS, GRAY])
WHITE = Image.new("RGBA", (47, 33), "white")
ON_WHITE = np.asarray(Image.alpha_composite(WHITE, Image.fromarray(CLEAR)).convert("RGB"))
PROFILED = {"icc_profile": ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes()}
TURNED = {"tiffinfo": {274: 6}}


def nudged(array, step=1):
    """One pixel is another."""
    result = array.copy()
    result[20, 31] ^= np.array(step, array.dtype)
    return result


# The source page and how it is saved, as the right output is in each of the formats; what the output
# is instead, pixels or options; what the check finds. Then pixels and options of another right output.
UPRIGHT = (upright(COLOURS, 6), {"dpi": (150, 300)})
FAULTS = [
    ("one pixel", COLOURS, {}, "png tiff bmp", nudged(COLOURS), "pixels"),
    ("one low byte of 16 bits", DEEP, {}, "png", nudged(DEEP), "pixels"),
    ("one pixel", FEW, {}, "gif", nudged(FEW, 64), "pixels"),
    ("upside down", COLOURS, {}, "jpeg", COLOURS[::-1], "pixels"),
    ("not baseline", COLOURS, {}, "jpeg", {"progressive": True}, "frame"),
    ("another coding", COLOURS, {}, "tiff", {"compression": "tiff_lzw"}, "compression"),
    ("resolution turned round", COLOURS, {}, "png bmp jpeg tiff", {"dpi": (150, 300)}, "resolution"),
    ("resolution invented", COLOURS, {"dpi": None}, "png", {"dpi": (300, 150)}, "resolution"),
    ("turned the other way", COLOURS, TURNED, "png", upright(COLOURS, 8), "pixels", *UPRIGHT),
    ("not turned", COLOURS, TURNED, "png", COLOURS, "size", *UPRIGHT),
    ("orientation lost", COLOURS, TURNED, "tiff", {"tiffinfo": {}}, "orientation"),
    ("profile lost", COLOURS, PROFILED, "png jpeg tiff", {"icc_profile": None}, "icc"),
    ("another profile", COLOURS, PROFILED, "png", {"icc_profile": bytes(200)}, "icc"),
    ("1 bit in 8", BILEVEL, {}, "png tiff", BILEVEL * np.uint8(255), "depth"),
    ("gray in colour", GRAY, {}, "png", np.dstack([GRAY] * 3), "channels"),
    ("alpha lost", CLEAR, {}, "png", COLOURS, "pixels"),
    ("alpha not laid on white", CLEAR, {}, "bmp", COLOURS, "pixels", ON_WHITE, {}),
]
# What the program does, options of the check, and what it is to find in PNG files.
MISDEEDS = [
    ("rm \"$out\"/a_1.png", [], "missing silent"), ("touch \"$out/.a.tmp\"", [], "names"),
    ("kill -SEGV $$", [], "crash"), ("exit 99", ["--smoke"], "crash silent"), ("exit 1", [], "exit silent"),
    ("sleep 60", ["--time-limit", "0.3"], "time"), ("", ["--memory-limit", "1"], "memory"),
    ("echo 'x.cpp:3: runtime error: shift' >&2", ["--smoke"], "sanitizer"),
]
# Stands in for the program: hands out prepared outputs, or misbehaves as its folder says.
PROGRAM = """#!/bin/sh
while [ $# -gt 1 ]; do
  case "$1" in -o) out=$2 ;; esac
  shift
done
cp "$(dirname "$0")"/made/* "$out/"
. "$(dirname "$0")/misbehave"
exit 0
"""


def row_of(array, number, pages, options):
    """The row of EXPECTED.tsv for a page of such samples."""
    bits = 1 if array.dtype == bool else array.dtype.itemsize * 8
    array = (array * np.uint8(255) if bits == 1 else array).reshape(*array.shape[:2], -1)
    channels, dpi = array.shape[2], options.get("dpi", (300, 150)) or "--"
    alpha = "unassociated" if channels == 4 else None
    form = Canonical("gray" if channels == 1 else "rgb", array, alpha)
    return {"path": "a.tif", "verdict": "good", "pages": pages, "page": number, "width": 47, "height": 33,
            "bits": bits, "samples": channels, "sampleformat": 1, "compression": "none",
            "photometric": "minisblack" if channels == 1 else "rgb", "alpha": alpha or "none",
            "orientation": options.get("tiffinfo", {}).get(274, 1), "xres": dpi[0], "yres": dpi[1],
            "unit": "inch", "pixels": form.digest(), "form": form.form}


class SelfTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder, self.made = Path(folder.name), Path(folder.name) / "made"
        (self.folder / "program").write_text(PROGRAM)
        (self.folder / "program").chmod(0o755)

    def make_source(self, *pages, **options):
        shutil.rmtree(self.made, ignore_errors=True)
        self.made.mkdir()
        rows = [row_of(page, number, len(pages), options) for number, page in enumerate(pages, 1)]
        lines = ["\t".join(map(str, line)) + "\n" for line in (rows[0], *(row.values() for row in rows))]
        (self.folder / "EXPECTED.tsv").write_text("".join(lines))
        self.save("a.tif", *pages, **options)

    def save(self, name, page, *others, **options):
        options = {"dpi": (300, 150), **options}
        others = [Image.fromarray(np.ascontiguousarray(other)) for other in others]
        picture = Image.fromarray(np.ascontiguousarray(page))
        if name.endswith(".jpg"):
            options = {"quality": 98, "subsampling": 0, **options}
        elif name.endswith(".gif"):
            picture = picture.quantize(64, dither=Image.Dither.NONE)
        elif others:
            options.update(save_all=True, append_images=others)
        picture.save(self.folder / name, **{name: value for name, value in options.items() if value})

    def found(self, format_, *options, misdeed="", known=""):
        (self.folder / "misbehave").write_text(misdeed)
        (self.folder / "known").write_text(known)
        words = {"--bin": "program", "--corpus": "", "--known": "known", "--report": "report"}
        words = [word for name, path in words.items() for word in (name, str(self.folder / path))]
        with contextlib.redirect_stdout(io.StringIO()):
            code = check_corpus.main([*words, "--formats", format_, *options])
        rows = [line.split("\t") for line in (self.folder / "report").read_text().splitlines()[1:]]
        found = " ".join(sorted({what for *_, what, _, reason in rows if not reason}))
        self.assertTrue(code == 1 or not found)
        return found or code

    def test_a_fault_in_one_thing_is_noticed(self):
        for name, source, how, formats, wrong, expected, *other in FAULTS:
            right, options = other or (source, how)
            for format_ in formats.split():
                with self.subTest(fault=name, format=format_):
                    output = "made/a_1" + check_corpus.EXTENSIONS[format_]
                    self.make_source(source, **how)
                    self.save(output, right, **options)
                    self.assertEqual(self.found(format_), 0)
                    changes = wrong if isinstance(wrong, dict) else {}
                    self.save(output, right if changes else wrong, **{**options, **changes})
                    self.assertEqual(self.found(format_), expected)
                    (self.folder / output).write_bytes((self.folder / output).read_bytes()[:-20])
                    self.assertNotIn(self.found(format_), (0, expected))

    def test_misdeeds_are_noticed(self):
        self.make_source(COLOURS)
        self.save("made/a_1.png", COLOURS)
        for misdeed, options, expected in MISDEEDS:
            with self.subTest(misdeed=misdeed):
                self.assertEqual(self.found("png", *options, misdeed=misdeed), expected)

    def test_pages_lost_or_out_of_order_are_noticed_unless_known(self):
        known = "a.tif\t*\tkept-*\tpixels\tit is being looked into\n"
        for pages, expected, expected_when_known in (
                ([COLOURS], "missing pages silent", "missing pages silent"),
                ([COLOURS[::-1], COLOURS], "pixels", 0), ([COLOURS, COLOURS], "pixels", 0),
                ([COLOURS, COLOURS[::-1]], 0, 1)):  # 1: it is not found any more
            with self.subTest(expected=expected), patch.object(check_corpus, "FORMATS", ["kept-none"]):
                self.make_source(COLOURS, COLOURS[::-1])
                self.save("made/a.tiff", *pages)
                self.assertEqual(self.found("kept-none"), expected)
                self.assertEqual(self.found("kept-none", known=known), expected_when_known)


if __name__ == "__main__":
    unittest.main()
