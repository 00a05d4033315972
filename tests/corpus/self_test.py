"""Tests of the judges: right outputs pass, outputs with one thing wrong are told apart.

Run by `check_corpus.py --self-test`. The pictures are made here and written by Pillow or by hand.
"""
import contextlib
import io
import os
import stat
import struct
import tempfile
import unittest
import zlib
from pathlib import Path

import numpy as np
from PIL import Image, ImageCms, ImageOps

import check_corpus
from expected import ExpectedPage
from judge import PageJudge
from other_readers import read_bmp, read_gif, read_jpeg
from picture import Canonical, DecodeError, as_stored, canonical, simplify, upright
from png_reader import read_png
from reference import Reference, References
from tiff_reader import Pages

COLUMNS = ("path kind endian verdict chain pages page_counts page width height bits samples sampleformat "
           "photometric compression predictor fillorder planar layout orientation xres yres unit icc "
           "alpha reduced subifds past_eof readers pixels form agree codebases").split()
WIDTH, HEIGHT = 47, 33  # no multiple of 8, width unlike height


def colour_ramp():
    """RGB, unlike in x, y and channel."""
    y, x = np.mgrid[0:HEIGHT, 0:WIDTH]
    return np.stack([x * 5, y * 7, (x + y) * 3], axis=2).astype(np.uint8)


def gray_ramp():
    return colour_ramp()[:, :, 0] // 2 + colour_ramp()[:, :, 1] // 3


def bilevel_pattern():
    return (gray_ramp() * 37 % 101 > 50).astype(np.uint8) * 255


def row_of(form, **fields):
    """A row of EXPECTED.tsv for a page that shows `form`."""
    width, height = form.size
    row = dict.fromkeys(COLUMNS, "0")
    row.update(path="page.tif", kind="tiff", verdict="good", pages="1", page="1", width=str(width),
               height=str(height), bits=str(form.array.dtype.itemsize * 8),
               samples=str(form.array.shape[2]), sampleformat="1",
               photometric={"gray": "minisblack", "rgb": "rgb", "cmyk": "separated"}[form.model],
               compression="none", orientation="1", xres="300", yres="150", unit="inch",
               alpha=form.alpha or "none", readers="im:full pil:full", pixels=form.digest(),
               form=form.form)
    row.update(fields)
    return row


def judge_of(form, profile=None, **fields):
    return PageJudge(ExpectedPage(row_of(form, **fields)), Reference(form, True), profile)


def kinds(found):
    return sorted({what for what, _ in found})


def write_png(path, samples, filters):
    """A 16-bit RGB PNG whose rows take the given filters in turn; Pillow writes none."""
    height, width, _ = samples.shape
    raw = np.ascontiguousarray(samples.astype(">u2")).view(np.uint8).reshape(height, width * 6)
    packed, above = b"", bytes(width * 6)
    for number, row in enumerate(bytes(line) for line in raw):
        kind = filters[number % len(filters)]
        line = bytearray()
        for i, value in enumerate(row):
            a, b, c = (row[i - 6] if i >= 6 else 0), above[i], (above[i - 6] if i >= 6 else 0)
            nearest = min((abs(b - c), 0, a), (abs(a - c), 1, b), (abs(a + b - 2 * c), 2, c))[2]
            line.append((value - (0, a, b, (a + b) // 2, nearest)[kind]) & 255)
        packed += bytes([kind]) + bytes(line)
        above = row
    chunks = [(b"IHDR", struct.pack(">IIBBBBB", width, height, 16, 2, 0, 0, 0)),
              (b"IDAT", zlib.compress(packed)), (b"IEND", b"")]
    with open(path, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n")
        for name, body in chunks:
            file.write(struct.pack(">I", len(body)) + name + body
                       + struct.pack(">I", zlib.crc32(name + body)))


class WithFolder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def saved(self, array, name, mode=None, **options):
        path = self.folder / name
        picture = Image.fromarray(array)
        (picture.convert(mode) if mode else picture).save(path, **options)
        return path

    def tiff_page(self, path):
        page = Pages(path, self.folder).page(0)
        self.assertNotIsInstance(page, DecodeError, str(page))
        return page


class Readers(WithFolder):
    def test_png_of_every_kind_reads_as_pillow_wrote_it(self):
        noise = np.random.default_rng(7).integers(0, 256, (HEIGHT, WIDTH, 4), np.uint8)
        smooth = np.concatenate([colour_ramp(), noise[:, :, 3:]], axis=2)
        for array in (noise, smooth):
            for mode in ("1", "L", "LA", "RGB", "RGBA"):
                with self.subTest(mode=mode):
                    picture = Image.fromarray(array).convert(mode)
                    picture.save(self.folder / "a.png")
                    wanted = np.asarray(picture).reshape(HEIGHT, WIDTH, -1).astype(np.uint8)
                    np.testing.assert_array_equal(read_png(self.folder / "a.png").samples, wanted)

    def test_deep_png_reads_through_every_filter(self):
        samples = np.random.default_rng(3).integers(0, 65536, (HEIGHT, WIDTH, 3)).astype(np.uint16)
        for filters in ((0,), (1, 2), (3,), (4,), (0, 1, 2, 3, 4)):
            with self.subTest(filters=filters):
                write_png(self.folder / "deep.png", samples, filters)
                np.testing.assert_array_equal(read_png(self.folder / "deep.png").samples, samples)

    def test_png_with_a_flipped_bit_is_refused(self):
        path = self.saved(colour_ramp(), "a.png")
        data = bytearray(path.read_bytes())
        data[len(data) // 2] ^= 1
        path.write_bytes(data)
        self.assertRaises(DecodeError, read_png, path)

    def test_tiff_reads_the_same_in_every_compression(self):
        for compression in ("raw", "tiff_lzw", "packbits", "tiff_adobe_deflate"):
            with self.subTest(compression=compression):
                page = self.tiff_page(self.saved(colour_ramp(), "a.tif", compression=compression))
                np.testing.assert_array_equal(page.samples, colour_ramp())
        for compression in ("raw", "group3", "group4", "tiff_lzw"):
            with self.subTest(compression=compression):
                page = self.tiff_page(self.saved(bilevel_pattern(), "b.tif", "1",
                                                 compression=compression))
                np.testing.assert_array_equal(canonical(page).array[:, :, 0], bilevel_pattern())

    def test_tiff_cut_short_is_refused(self):
        path = self.saved(colour_ramp(), "a.tif", compression="raw")
        data = path.read_bytes()
        path.write_bytes(data[:-100])  # Pillow writes the pixels last
        self.assertIsInstance(Pages(path, self.folder).page(0), DecodeError)

    def test_bmp_of_each_depth_reads_as_pillow_wrote_it(self):
        path = self.saved(gray_ramp(), "g.bmp")
        self.assertRaises(DecodeError, read_bmp, path)  # Pillow fills the reserved bytes with 255
        data = bytearray(path.read_bytes())
        data[57:54 + 1024:4] = bytes(256)
        path.write_bytes(data)
        gray = read_bmp(path)
        np.testing.assert_array_equal(canonical(gray).array[:, :, 0], gray_ramp())
        colour = read_bmp(self.saved(colour_ramp(), "c.bmp", dpi=(300, 150)))
        np.testing.assert_array_equal(colour.samples, colour_ramp())
        self.assertEqual(colour.resolution, (11811, 5906, "metre"))

    def test_each_orientation_is_applied_as_pillow_does_and_undone(self):
        stored = colour_ramp()
        for orientation in range(1, 9):
            with self.subTest(orientation=orientation):
                tagged = Image.fromarray(stored)
                tagged.getexif()[0x112] = orientation
                turned = upright(stored, orientation)
                np.testing.assert_array_equal(turned, np.asarray(ImageOps.exif_transpose(tagged)))
                np.testing.assert_array_equal(as_stored(turned, orientation), stored)


class Judging(WithFolder):
    """Each output is right but for the one thing that the test is about."""

    def setUp(self):
        super().setUp()
        self.colours = colour_ramp()
        self.changed = self.colours.copy()
        self.changed[20, 31, 1] ^= 1
        self.form = Canonical("rgb", self.colours)
        self.judge = judge_of(self.form)

    def png(self, array, **options):
        return read_png(self.saved(array, "a.png", **{"dpi": (300, 150), **options}))

    def tiff(self, array, **options):
        return self.tiff_page(self.saved(array, "a.tif", **{"dpi": (300, 150), **options}))

    def test_right_outputs_pass(self):
        self.assertEqual(self.judge.png(self.png(self.colours)), [])
        self.assertEqual(self.judge.tiff(self.tiff(self.colours), "none"), [])
        bmp = self.saved(self.colours, "a.bmp", dpi=(300, 150))
        self.assertEqual(self.judge.bmp(read_bmp(bmp)), [])
        jpeg = self.saved(self.colours, "a.jpg", quality=98, subsampling=0, dpi=(300, 150))
        self.assertEqual(self.judge.jpeg(read_jpeg(jpeg)), [])

    def test_one_pixel_off_by_one_is_seen(self):
        self.assertEqual(kinds(self.judge.png(self.png(self.changed))), ["pixels"])
        self.assertEqual(kinds(self.judge.tiff(self.tiff(self.changed), "none")), ["pixels"])
        bmp = self.saved(self.changed, "a.bmp", dpi=(300, 150))
        self.assertEqual(kinds(self.judge.bmp(read_bmp(bmp))), ["pixels"])

    def test_kept_pages_that_look_like_a_judged_page_share_its_verdict(self):
        self.judge.tiff(self.tiff(self.changed), "none")
        again = self.tiff(self.changed, compression="tiff_lzw")
        self.assertEqual(kinds(self.judge.tiff(again, "lzw")), ["pixels"])
        right = self.tiff(self.colours, compression="tiff_lzw")
        self.assertEqual(self.judge.tiff(right, "lzw"), [])

    def test_wrong_resolution_is_seen(self):
        self.assertEqual(kinds(self.judge.png(self.png(self.colours, dpi=(150, 300)))), ["resolution"])
        self.assertEqual(kinds(self.judge.tiff(self.tiff(self.colours, dpi=(300, 300)), "none")),
                         ["resolution"])
        bmp = self.saved(self.colours, "a.bmp", dpi=(300, 300))
        self.assertEqual(kinds(self.judge.bmp(read_bmp(bmp))), ["resolution"])
        jpeg = self.saved(self.colours, "a.jpg", quality=98, subsampling=0)
        self.assertEqual(kinds(self.judge.jpeg(read_jpeg(jpeg))), ["resolution"])
        unitless = judge_of(self.form, unit="none")
        self.assertEqual(kinds(unitless.png(self.png(self.colours))), ["resolution"])

    def test_orientation_is_applied_once(self):
        judge = judge_of(self.form, orientation="6")
        turned = np.ascontiguousarray(upright(self.colours, 6))
        self.assertEqual(judge.png(self.png(turned, dpi=(150, 300))), [])
        self.assertEqual(kinds(judge.png(self.png(turned))), ["resolution"])
        self.assertIn("size", kinds(judge.png(self.png(self.colours))))
        other = np.ascontiguousarray(upright(self.colours, 8))
        self.assertEqual(kinds(judge.png(self.png(other, dpi=(150, 300)))), ["pixels"])
        self.assertEqual(judge.tiff(self.tiff(self.colours, tiffinfo={274: 6}), "none"), [])
        self.assertEqual(kinds(judge.tiff(self.tiff(self.colours), "none")), ["orientation"])

    def test_profile_is_kept_byte_for_byte(self):
        profile = ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes()
        other = profile[:-1] + bytes([profile[-1] ^ 1])
        judge = judge_of(self.form, profile)
        self.assertEqual(judge.png(self.png(self.colours, icc_profile=profile)), [])
        self.assertEqual(kinds(judge.png(self.png(self.colours))), ["icc"])
        self.assertEqual(kinds(judge.png(self.png(self.colours, icc_profile=other))), ["icc"])
        self.assertEqual(kinds(self.judge.png(self.png(self.colours, icc_profile=profile))), ["icc"])
        jpeg = {"quality": 98, "subsampling": 0, "dpi": (300, 150)}
        right = self.saved(self.colours, "a.jpg", icc_profile=profile, **jpeg)
        self.assertEqual(judge.jpeg(read_jpeg(right)), [])
        lost = self.saved(self.colours, "b.jpg", **jpeg)
        self.assertEqual(kinds(judge.jpeg(read_jpeg(lost))), ["icc"])

    def test_depth_and_channels_are_kept(self):
        form = Canonical("gray", bilevel_pattern()[:, :, None])
        judge = judge_of(form, bits="1", photometric="miniswhite")
        self.assertEqual(judge.png(self.png(bilevel_pattern(), mode="1")), [])
        self.assertEqual(kinds(judge.png(self.png(bilevel_pattern()))), ["depth"])
        self.assertEqual(kinds(judge.png(self.png(bilevel_pattern(), mode="RGB"))),
                         ["channels", "depth"])
        self.assertEqual(kinds(judge.tiff(self.tiff(bilevel_pattern()), "none")), ["depth"])
        right = self.tiff(bilevel_pattern(), mode="1", compression="group4")
        self.assertEqual(judge.tiff(right, "g4"), [])
        self.assertEqual(kinds(judge.tiff(right, "g3")), ["compression"])

    def test_gif_is_exact_up_to_256_colours(self):
        few = self.colours & 0xC0
        judge = judge_of(Canonical("rgb", few))
        picture = Image.fromarray(few).quantize(64, dither=Image.Dither.NONE)
        picture.save(self.folder / "a.gif")
        self.assertEqual(judge.gif(read_gif(self.folder / "a.gif")), [])
        few[0, 0] ^= 64
        self.assertEqual(kinds(judge_of(Canonical("rgb", few)).gif(read_gif(self.folder / "a.gif"))),
                         ["pixels"])

    def test_alpha_is_kept_or_laid_over_white(self):
        alpha = gray_ramp()[:, :, None]
        straight = np.concatenate([self.colours, alpha], axis=2)
        judge = judge_of(Canonical("rgb", straight, "unassociated"))
        self.assertEqual(judge.png(self.png(straight)), [])
        self.assertEqual(kinds(judge.png(self.png(self.colours))), ["pixels"])
        white = Image.new("RGB", (WIDTH, HEIGHT), "white")
        white.paste(Image.fromarray(straight), mask=Image.fromarray(alpha[:, :, 0]))
        bmp = self.saved(np.asarray(white), "a.bmp", dpi=(300, 150))
        self.assertEqual(judge.bmp(read_bmp(bmp)), [])
        bmp = self.saved(self.colours, "b.bmp", dpi=(300, 150))
        self.assertEqual(kinds(judge.bmp(read_bmp(bmp))), ["pixels"])
        # The same with colours multiplied by alpha: the PNG holds them divided again.
        product = (self.colours.astype(np.uint16) * alpha + 127) // 255
        multiplied = np.concatenate([product.astype(np.uint8), alpha], axis=2)
        judge = judge_of(Canonical("rgb", multiplied, "associated"))
        self.assertEqual(judge.png(self.png(straight)), [])
        self.assertEqual(kinds(judge.png(self.png(multiplied))), ["pixels"])

    def test_lossy_sources_are_compared_by_decibels(self):
        judge = PageJudge(ExpectedPage(row_of(self.form, compression="jpeg")),
                          Reference(self.form, True, None, 40.0, True), None)
        self.assertEqual(judge.png(self.png(self.changed)), [])
        far = self.colours[::-1].copy()
        self.assertEqual(kinds(judge.png(self.png(far))), ["pixels"])

    def test_inverted_cmyk_is_seen(self):
        ink = np.concatenate([255 - self.colours, np.zeros_like(self.colours[:, :, :1])], axis=2)
        judge = judge_of(Canonical("cmyk", ink))
        self.assertEqual(judge.png(self.png(self.colours)), [])
        self.assertEqual(kinds(judge.png(self.png(255 - self.colours))), ["pixels"])
        self.assertEqual(kinds(judge.tiff(self.tiff(self.colours), "none")), ["channels"])

    def test_reference_is_proved_by_its_digest(self):
        path = self.saved(self.colours, "source.tif", compression="tiff_lzw")
        right = References(path, None, self.folder).of(ExpectedPage(row_of(self.form)))
        self.assertTrue(right.proved)
        other = ExpectedPage(row_of(Canonical("rgb", self.changed)))
        self.assertFalse(References(path, None, self.folder).of(other).proved)

    def test_canonical_form_drops_what_says_nothing(self):
        gray = np.repeat(gray_ramp()[:, :, None], 3, axis=2).astype(np.uint16) * 257
        opaque = np.full_like(gray[:, :, :1], 65535)
        form = simplify(Canonical("rgb", np.concatenate([gray, opaque], axis=2), "unassociated"))
        self.assertEqual(form.form, "GRAY8")
        np.testing.assert_array_equal(form.array[:, :, 0], gray_ramp())


PROGRAM = """#!/bin/sh
# Stands in for the program: hands out prepared outputs, or misbehaves as its folder says.
while [ $# -gt 1 ]; do
  case "$1" in -f) format=$2; shift ;; -o) out=$2; shift ;; --split) split=1 ;; esac
  shift
done
[ "$format" = tiff ] && [ -z "$split" ] && format=kept
here=$(dirname "$0")
[ -f "$here/message" ] && cat "$here/message" >&2
cp "$here/$format/"* "$out/" 2>/dev/null
[ -f "$here/misbehave" ] && . "$here/misbehave"
exit 0
"""


class WholeRun(WithFolder):
    """The check as a whole over a corpus of one file of two pages."""

    def setUp(self):
        super().setUp()
        self.corpus, self.answers = self.folder / "corpus", self.folder / "program"
        self.corpus.mkdir()
        self.answers.mkdir()
        self.program = self.answers / "pagestack-convert"
        self.program.write_text(PROGRAM)
        self.program.chmod(self.program.stat().st_mode | stat.S_IXUSR)
        self.known = self.folder / "known.tsv"
        self.known.write_text("")
        first, second = colour_ramp(), colour_ramp()[::-1].copy()
        pages = [Image.fromarray(first), Image.fromarray(second)]
        pages[0].save(self.corpus / "page.tif", save_all=True, append_images=pages[1:], dpi=(300, 150))
        rows = [row_of(Canonical("rgb", array), pages="2", page=str(number))
                for number, array in enumerate((first, second), 1)]
        lines = ["\t".join(COLUMNS)] + ["\t".join(row[name] for name in COLUMNS) for row in rows]
        (self.corpus / "EXPECTED.tsv").write_text("\n".join(lines) + "\n")
        for name in ("png", "kept"):
            (self.answers / name).mkdir()
        for number, picture in enumerate(pages, 1):
            picture.save(self.answers / "png" / f"page_{number}.png", dpi=(300, 150))
        self.keep(pages)
        self.pages = pages

    def keep(self, pages):
        pages[0].save(self.answers / "kept" / "page.tiff", save_all=True, append_images=pages[1:],
                      dpi=(300, 150))

    def run_check(self, *options):
        report = self.folder / "report.tsv"
        words = ["--bin", str(self.program), "--corpus", str(self.corpus), "--known", str(self.known),
                 "--formats", "png,kept-none", "--jobs", "1", "--report", str(report), *options]
        text = io.StringIO()
        with contextlib.redirect_stdout(text):
            code = check_corpus.main(words)
        rows = [line.split("\t") for line in report.read_text().splitlines()[1:]]
        return code, sorted({(row[2], row[3]) for row in rows}), text.getvalue()

    def misbehave(self, shell):
        (self.answers / "misbehave").write_text(shell + "\n")

    def test_right_outputs_pass(self):
        code, differences, _ = self.run_check()
        self.assertEqual((code, differences), (0, []))

    def test_missing_page_is_seen(self):
        os.remove(self.answers / "png" / "page_2.png")
        self.keep(self.pages[:1])
        code, differences, _ = self.run_check()
        self.assertEqual(code, 1)
        self.assertEqual(differences, [("kept-none", "pages"), ("kept-none", "silent"),
                                       ("png", "missing"), ("png", "silent")])

    def test_pages_in_the_wrong_order_are_seen(self):
        self.keep(self.pages[::-1])
        self.assertEqual(self.run_check()[:2], (1, [("kept-none", "pixels")]))

    def test_leftover_of_a_write_is_seen(self):
        self.misbehave('touch "$out/.page.tiff.tmp"')
        self.assertEqual(self.run_check()[1], [("kept-none", "names"), ("png", "names")])

    def test_crash_hang_and_hunger_are_seen(self):
        self.misbehave("kill -SEGV $$")
        self.assertIn(("png", "crash"), self.run_check()[1])
        self.misbehave("sleep 60")
        self.assertIn(("png", "time"), self.run_check("--time-limit", "0.3")[1])
        self.misbehave("exit 99")
        self.assertIn(("png", "crash"), self.run_check("--smoke")[1])
        self.misbehave("")
        self.assertIn(("png", "memory"), self.run_check("--memory-limit", "1")[1])
        (self.answers / "message").write_text("x.cpp:3: runtime error: shift\n")
        self.assertIn(("png", "sanitizer"), self.run_check("--smoke")[1])

    def test_failure_without_a_message_is_seen(self):
        self.misbehave("exit 1")
        self.assertIn(("png", "silent"), self.run_check()[1])

    def test_known_differences_pass_until_they_are_gone(self):
        self.keep(self.pages[::-1])
        self.known.write_text("page.tif\t*\tkept-*\tpixels\tthe order is being looked into\n")
        self.assertEqual(self.run_check()[0], 0)
        self.keep(self.pages)
        code, _, text = self.run_check()
        self.assertEqual(code, 1)
        self.assertIn("not found any more", text)
        self.assertEqual(self.run_check("--formats", "png")[0], 0)

    def test_without_a_corpus_it_is_skipped(self):
        with contextlib.redirect_stdout(io.StringIO()):
            code = check_corpus.main(["--bin", "x", "--corpus", str(self.folder / "none")])
        self.assertEqual(code, check_corpus.SKIPPED)


def main():
    suite = unittest.defaultTestLoader.loadTestsFromModule(__import__("self_test"))
    return 0 if unittest.TextTestRunner(verbosity=1).run(suite).wasSuccessful() else 1
