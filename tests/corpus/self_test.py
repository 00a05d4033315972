"""Tests of the judge: right outputs pass, and each of a table of faults in one thing alone is noticed.

Run by `check_corpus.py --self-test`. The pictures are made here and written by Pillow or by hand.
"""
import contextlib
import io
import shutil
import struct
import tempfile
import unittest
import zlib
from pathlib import Path

import numpy as np
from PIL import Image, ImageCms

import check_corpus
from expected import ExpectedPage
from judge import PageJudge
from output_readers import read_bmp, read_gif, read_jpeg, read_png
from picture import Canonical, DecodeError, canonical, upright
from reference import Reference, References
from tiff_reader import Pages

COLUMNS = ("path kind verdict pages page width height bits samples sampleformat photometric compression "
           "orientation xres yres unit alpha readers pixels form").split()
Y, X = np.mgrid[0:33, 0:47]  # no multiple of 8, width unlike height
COLOURS = np.stack([X * 5, Y * 7, (X + Y) * 3], axis=2).astype(np.uint8)  # unlike in x, y and channel
GRAY = COLOURS[:, :, 0] // 2 + COLOURS[:, :, 1] // 3
BILEVEL = (GRAY * 37 % 101 > 50).astype(np.uint8) * 255
FEW = COLOURS & 0xC0
DEEP = COLOURS.astype(np.uint16) * 251 + X.astype(np.uint16)[:, :, None]
STRAIGHT = np.dstack([COLOURS, GRAY])
ON_WHITE = np.asarray(Image.alpha_composite(Image.new("RGBA", (47, 33), "white"), Image.fromarray(STRAIGHT)))
ON_WHITE = np.ascontiguousarray(ON_WHITE[:, :, :3])
PRODUCT = np.dstack([((COLOURS.astype(np.uint16) * GRAY[:, :, None] + 127) // 255).astype(np.uint8), GRAY])
INK = np.dstack([255 - COLOURS, np.zeros_like(GRAY)])
PROFILE = ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes()
OTHER_PROFILE = PROFILE[:-1] + bytes([PROFILE[-1] ^ 1])


def nudged(array, step=1):
    """One sample is another."""
    result = array.copy()
    result[20, 31, 1] ^= step
    return result


def form_of(array, alpha=None):
    array = array.reshape(*array.shape[:2], -1)
    ink = array is INK or np.array_equal(array, INK)
    return Canonical("gray" if array.shape[2] == 1 else "cmyk" if ink else "rgb", array, alpha)


def row_of(form, **fields):
    """A row of EXPECTED.tsv for a page that shows `form`."""
    row = dict(dict.fromkeys(COLUMNS, "0"), path="page.tif", kind="tiff", verdict="good", pages="1", page="1",
               width=str(form.size[0]), height=str(form.size[1]), bits=str(form.array.dtype.itemsize * 8),
               samples=str(form.array.shape[2]), sampleformat="1", compression="none", orientation="1",
               photometric={"gray": "minisblack", "rgb": "rgb", "cmyk": "separated"}[form.model], xres="300",
               yres="150", unit="inch", alpha=form.alpha or "none", readers="im:full pil:full",
               pixels=form.digest(), form=form.form)
    return {**row, **fields}


def write_deep_png(path, samples):
    """A 16-bit PNG whose rows take the five filters in turn; Pillow writes none of colour."""
    height, width, channels = samples.shape
    step, packed, above = channels * 2, b"", bytes(width * channels * 2)
    for number, row in enumerate(bytes(line) for line in samples.astype(">u2").view(np.uint8).reshape(height, -1)):
        line = bytearray([number % 5])
        for i, value in enumerate(row):
            a, b, c = (row[i - step] if i >= step else 0), above[i], (above[i - step] if i >= step else 0)
            nearest = min((abs(b - c), 0, a), (abs(a - c), 1, b), (abs(a + b - 2 * c), 2, c))[2]
            line.append((value - (0, a, b, (a + b) // 2, nearest)[number % 5]) & 255)
        packed, above = packed + line, row
    head = struct.pack(">IIBBBBB", width, height, 16, {2: 4, 3: 2, 4: 6}[channels], 0, 0, 0)
    chunks = [(b"IHDR", head), (b"pHYs", struct.pack(">IIB", 11811, 5906, 1)), (b"IDAT", zlib.compress(packed)),
              (b"IEND", b"")]
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + b"".join(
        struct.pack(">I", len(body)) + name + body + struct.pack(">I", zlib.crc32(name + body))
        for name, body in chunks))


class WithFolder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)


# A source page (its samples and what its row says otherwise), a format with Pillow's options, the
# right output, a faulty one (samples, options), and the kinds of difference that it must give.
SAME = object()
JPEG = {"quality": 98, "subsampling": 0}
FAULTS = [
    ("one sample of PNG off by one", COLOURS, {}, "png", {}, COLOURS, nudged(COLOURS), {}, "pixels"),
    ("one low byte of 16 bits", DEEP, {}, "png", {}, DEEP, nudged(DEEP), {}, "pixels"),
    ("one low byte beside 16-bit alpha", DEEP, {"alpha": "unassociated"}, "png", {}, np.dstack([DEEP, DEEP[:, :, 0]]),
     nudged(np.dstack([DEEP, DEEP[:, :, 0]])), {}, "pixels"),
    ("one sample of TIFF", COLOURS, {}, "tiff", {}, COLOURS, nudged(COLOURS), {}, "pixels"),
    ("another compression", COLOURS, {}, "tiff", {}, COLOURS, SAME, {"compression": "tiff_lzw"}, "compression"),
    ("one sample of BMP", COLOURS, {}, "bmp", {}, COLOURS, nudged(COLOURS), {}, "pixels"),
    ("one pixel of GIF", FEW, {}, "gif", {}, FEW, nudged(FEW, 64), {}, "pixels"),
    ("JPEG upside down", COLOURS, {}, "jpeg", JPEG, COLOURS, COLOURS[::-1], {}, "pixels"),
    ("JPEG not baseline", COLOURS, {}, "jpeg", JPEG, COLOURS, SAME, {"progressive": True}, "frame"),
    *[("resolution turned round", COLOURS, {}, kind, JPEG if kind == "jpeg" else {}, COLOURS, SAME,
       {"dpi": (150, 300)}, "resolution") for kind in ("png", "bmp", "jpeg", "tiff")],
    ("a resolution out of nothing", COLOURS, {"unit": "none"}, "png", {"dpi": None}, COLOURS, SAME,
     {"dpi": (300, 150)}, "resolution"),
    ("turned the other way", COLOURS, {"orientation": "6"}, "png", {"dpi": (150, 300)}, upright(COLOURS, 6),
     upright(COLOURS, 8), {}, "pixels"),
    ("not turned", COLOURS, {"orientation": "6"}, "png", {"dpi": (150, 300)}, upright(COLOURS, 6), COLOURS, {},
     "size"),
    ("orientation lost", COLOURS, {"orientation": "6"}, "tiff", {"tiffinfo": {274: 6}}, COLOURS, SAME,
     {"tiffinfo": {}}, "orientation"),
    *[("profile lost", COLOURS, {"icc": PROFILE}, kind, {"icc_profile": PROFILE, **(JPEG if kind == "jpeg" else {})},
       COLOURS, SAME, {"icc_profile": None}, "icc") for kind in ("png", "jpeg", "tiff")],
    ("another profile", COLOURS, {"icc": PROFILE}, "png", {"icc_profile": PROFILE}, COLOURS, SAME,
     {"icc_profile": OTHER_PROFILE}, "icc"),
    ("1 bit in 8", BILEVEL, {"bits": "1", "photometric": "miniswhite"}, "png", {"mode": "1"}, BILEVEL, SAME,
     {"mode": "L"}, "depth"),
    ("1 bit in 8 of TIFF", BILEVEL, {"bits": "1"}, "tiff", {"mode": "1"}, BILEVEL, SAME, {"mode": "L"}, "depth"),
    ("gray in colour", GRAY, {}, "png", {}, GRAY, SAME, {"mode": "RGB"}, "channels"),
    ("alpha lost", STRAIGHT, {"alpha": "unassociated"}, "png", {}, STRAIGHT, COLOURS, {}, "pixels"),
    ("alpha not laid on white", STRAIGHT, {"alpha": "unassociated"}, "bmp", {}, ON_WHITE, COLOURS, {}, "pixels"),
    ("multiplied colours as they are", PRODUCT, {"alpha": "associated"}, "png", {}, STRAIGHT, PRODUCT, {}, "pixels"),
    ("a lossy page upside down", COLOURS, {"compression": "jpeg"}, "png", {}, nudged(COLOURS), COLOURS[::-1], {},
     "pixels"),
    ("inks inverted", INK, {}, "png", {}, COLOURS, 255 - COLOURS, {}, "pixels"),
    ("inks in colour", INK, {}, "tiff", {"mode": "CMYK"}, INK, COLOURS, {"mode": "RGB"}, "channels"),
]


class Judging(WithFolder):
    def judged(self, judge, kind, array, options):
        path = self.folder / ("a." + kind)
        options = {"dpi": (300, 150), **options}
        if array.dtype == np.uint16:
            write_deep_png(path, array)
        else:
            mode, picture = options.pop("mode", None), Image.fromarray(np.ascontiguousarray(array))
            if array.shape[2:] == (4,) and mode == "CMYK":
                picture = Image.frombytes("CMYK", picture.size, picture.tobytes())
            picture = picture.convert(mode) if mode else picture
            if kind == "gif":
                picture = picture.quantize(64, dither=Image.Dither.NONE)
            picture.save(path, **{name: value for name, value in options.items() if value})
        if kind == "tiff":
            found = judge.tiff(Pages(path, self.folder).page(0), "none")
        else:
            read = {"png": read_png, "bmp": read_bmp, "gif": read_gif, "jpeg": read_jpeg}[kind]
            found = getattr(judge, kind)(read(path))
        return " ".join(sorted({what for what, _ in found}))

    def test_a_fault_in_one_thing_is_noticed(self):
        for name, source, row, kind, options, right, wrong, changes, expected in FAULTS:
            with self.subTest(fault=name, kind=kind):
                fields = {key: value for key, value in row.items() if key != "icc"}
                alpha = fields.get("alpha")
                form = form_of(right if source is DEEP else source, alpha)
                lossy = fields.get("compression") == "jpeg"
                judge = PageJudge(ExpectedPage(row_of(form, **fields)),
                                  Reference(form, True, None, 40.0 if lossy else 0, lossy), row.get("icc"))
                self.assertEqual(self.judged(judge, kind, right, options), "")
                wrong = right if wrong is SAME else wrong
                self.assertEqual(self.judged(judge, kind, wrong, {**options, **changes}), expected)

    def test_damaged_outputs_are_refused(self):
        for kind, read in (("png", read_png), ("bmp", read_bmp), ("jpeg", read_jpeg), ("gif", read_gif),
                           ("tiff", lambda path: Pages(path, self.folder).page(0))):
            path = self.folder / ("a." + kind)
            Image.fromarray(COLOURS).save(path)
            data = path.read_bytes()
            for damaged in (data[:-20], data[:-9] + bytes([data[-9] ^ 1]) + data[-8:])[:2 if kind == "png" else 1]:
                path.write_bytes(damaged)
                with self.subTest(kind=kind), self.assertRaises(DecodeError):
                    if isinstance(found := read(path), DecodeError):
                        raise found

    def test_tiff_reads_the_same_in_every_compression(self):
        for array, mode, names in ((COLOURS, "RGB", "raw tiff_lzw packbits tiff_adobe_deflate"),
                                   (BILEVEL, "1", "raw group3 group4 tiff_lzw")):
            for compression in names.split():
                path = self.folder / "a.tif"
                Image.fromarray(array).convert(mode).save(path, compression=compression)
                found = canonical(Pages(path, self.folder).page(0)).array
                self.assertTrue(np.array_equal(found, array.reshape(found.shape)), f"{mode} {compression}")

    def test_reference_is_proved_by_its_digest(self):
        path = self.folder / "a.tif"
        Image.fromarray(COLOURS).save(path, compression="tiff_lzw")
        for array, proved in ((COLOURS, True), (nudged(COLOURS), False)):
            page = ExpectedPage(row_of(form_of(array)))
            self.assertEqual(References(path, self.folder).of(page).proved, proved)


PROGRAM = """#!/bin/sh
# Stands in for the program: hands out prepared outputs, or misbehaves as its folder says.
while [ $# -gt 1 ]; do
  case "$1" in -f) format=$2; shift ;; -o) out=$2; shift ;; --split) split=1 ;; esac
  shift
done
[ "$format" = tiff ] && [ -z "$split" ] && format=kept
here=$(dirname "$0")
cp "$here/$format/"* "$out/" 2>/dev/null
. "$here/misbehave"
exit 0
"""
# What the program does, options of the check, and the differences in PNG files.
MISDEEDS = [
    ("rm \"$out\"/page_2.png", [], "missing silent"), ("touch \"$out/.page.tmp\"", [], "names"),
    ("kill -SEGV $$", [], "crash"), ("exit 99", ["--smoke"], "crash silent"), ("exit 1", [], "exit silent"),
    ("sleep 60", ["--time-limit", "0.3"], "time"), ("", ["--memory-limit", "1"], "memory"),
    ("echo 'x.cpp:3: runtime error: shift' >&2", ["--smoke"], "sanitizer"),
]


class WholeRun(WithFolder):
    """The check as a whole over a corpus of one file of two pages."""

    def setUp(self):
        super().setUp()
        for name in ("corpus", "png", "kept"):
            (self.folder / name).mkdir()
        (self.folder / "program").write_text(PROGRAM)
        (self.folder / "program").chmod(0o755)
        self.pages = [Image.fromarray(COLOURS), Image.fromarray(COLOURS[::-1].copy())]
        rows = [row_of(form_of(np.asarray(page)), pages="2", page=str(number))
                for number, page in enumerate(self.pages, 1)]
        (self.folder / "corpus/EXPECTED.tsv").write_text(
            "".join("\t".join(line) + "\n" for line in (COLUMNS, *([row[n] for n in COLUMNS] for row in rows))))
        for number, picture in enumerate(self.pages, 1):
            picture.save(self.folder / f"png/page_{number}.png", dpi=(300, 150))
        self.keep(self.pages)
        shutil.copy(self.folder / "kept/page.tiff", self.folder / "corpus/page.tif")

    def keep(self, pages):
        pages[0].save(self.folder / "kept/page.tiff", save_all=True, append_images=pages[1:], dpi=(300, 150))

    def run_check(self, *options, misdeed="", known="", formats="png,kept-none"):
        (self.folder / "misbehave").write_text(misdeed)
        (self.folder / "known.tsv").write_text(known)
        report, text = self.folder / "report.tsv", io.StringIO()
        with contextlib.redirect_stdout(text):
            code = check_corpus.main(["--bin", f"{self.folder}/program", "--corpus", f"{self.folder}/corpus",
                                      "--known", f"{self.folder}/known.tsv", "--formats", formats, "--jobs", "1",
                                      "--report", str(report), *options])
        rows = [line.split("\t") for line in report.read_text().splitlines()[1:]]
        return code, " ".join(sorted({row[3] for row in rows})), text.getvalue()

    def test_misdeeds_are_noticed(self):
        self.assertEqual(self.run_check()[:2], (0, ""))
        for misdeed, options, expected in MISDEEDS:
            with self.subTest(misdeed=misdeed):
                self.assertEqual(self.run_check(*options, misdeed=misdeed, formats="png")[:2], (1, expected))

    def test_pages_lost_or_out_of_order_are_noticed_unless_known(self):
        known = "page.tif\t*\tkept-*\tpixels\tthe order is being looked into\n"
        self.keep(self.pages[:1])
        self.assertEqual(self.run_check()[:2], (1, "pages silent"))
        self.keep(self.pages[::-1])
        self.assertEqual(self.run_check()[:2], (1, "pixels"))
        self.assertEqual(self.run_check(known=known)[0], 0)
        self.keep(self.pages)
        self.assertIn("not found any more", self.run_check(known=known)[2])
        self.assertEqual(self.run_check(known=known, formats="png")[0], 0)

    def test_without_a_corpus_it_is_skipped(self):
        with contextlib.redirect_stdout(io.StringIO()):
            self.assertEqual(check_corpus.main(["--bin", "x", "--corpus", "none"]), check_corpus.SKIPPED)


def main():
    suite = unittest.defaultTestLoader.loadTestsFromModule(__import__("self_test"))
    return 0 if unittest.TextTestRunner(verbosity=1).run(suite).wasSuccessful() else 1
