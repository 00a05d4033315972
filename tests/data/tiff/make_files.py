#!/usr/bin/python3
"""Draws the TIFF files beside this script, and writes what each page shows to EXPECTED.tsv.

The samples are computed here, so the digests are those of the drawing and not of any decoder. A plain writer
puts them into uncompressed files; tiffcp of libtiff compresses, tiles and turns those round. Needs Debian's
python3-numpy and libtiff-tools; the same versions write the same bytes.
"""
import struct
import subprocess
import sys
from pathlib import Path

import numpy as np

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parents[1] / "corpus"))
from picture import Picture, canonical  # noqa: E402

WIDTH, HEIGHT = 93, 61  # neither fills whole bytes, strips or tiles
COLUMNS = ("path verdict pages page width height bits samples sampleformat photometric compression orientation "
           "xres yres unit alpha pixels form").split()
PHOTOMETRIC = {"gray": 1, "rgb": 2, "palette": 3, "cmyk": 5}
ALPHA = {None: 0, "associated": 1, "unassociated": 2}
CODECS = {"": "none", "lzw": "lzw", "lzw:2": "lzw", "zip": "deflate", "packbits": "packbits",
          "g3:1d": "g3", "g3:2d": "g3", "g4": "g4", "jpeg": "jpeg"}


def drawing(channels, bits, shift=0):
    """Slopes, a disc and a grid of lines, other ones in each channel; of one bit, only disc and lines."""
    y, x = np.mgrid[0:HEIGHT, 0:WIDTH].astype(np.int64) + shift
    peak, planes = (1 << bits) - 1, []
    for channel in range(channels):
        step = 301 if bits > 8 else 1  # so that low bytes differ as well
        slope = (x * (channel + 2) + y * (5 - channel)) * step % (peak + 1) if bits >= 8 else x * peak // WIDTH
        disc = (x - 30 - 9 * channel) ** 2 + (y - 30) ** 2 < 400
        lines = (x % 11 == channel) | (y % 13 == channel + 2)
        planes.append(np.where(lines, 0, np.where(disc, peak - slope, slope if bits > 1 else peak)))
    return np.stack(planes, axis=2)


def page(model, bits, channels=None, shift=0, **more):
    channels = channels or {"gray": 1, "palette": 1, "rgb": 3, "cmyk": 4}[model]
    samples = drawing(channels, bits, shift).astype(np.uint8 if bits <= 8 else np.uint16)
    if model == "palette":
        steps = np.arange(1 << bits, dtype=np.uint16) * 257
        more["palette"] = np.stack([steps * 3, 65535 - steps, steps * 7], axis=1).astype(np.uint16)
    picture = Picture(samples, model, bits, **more)
    picture.resolution = (300, 150, "inch")
    return picture


def packed(picture):
    rows = picture.samples.reshape(picture.height, -1)
    if picture.bits >= 8:
        return rows.astype(f"<u{picture.bits // 8}").tobytes()
    digits = (rows[:, :, None] >> np.arange(picture.bits - 1, -1, -1)) & 1
    return np.packbits(digits.reshape(picture.height, -1).astype(np.uint8), axis=1).tobytes()


def directory(picture, at, is_last):
    """The bytes of one page that begins at `at`: its samples, long values and directory."""
    data, tags = packed(picture), []
    photometric = 0 if picture.white_is_zero else PHOTOMETRIC[picture.model]
    words = [(256, [picture.width]), (257, [picture.height]), (258, [picture.bits] * picture.channels), (259, [1]),
             (262, [photometric]), (273, [at]), (274, [picture.orientation]), (277, [picture.channels]),
             (278, [picture.height]), (279, [len(data)]), (282, picture.resolution[0]), (283, picture.resolution[1]),
             (296, [2])]
    if picture.palette is not None:
        words.append((320, picture.palette.T.ravel().tolist()))
    if picture.extras:
        words.append((338, [ALPHA[kind] for kind in picture.extras]))
    data += b"\0" * (len(data) % 2)
    for tag, values in words:
        if isinstance(values, int):
            kind, count, value = 5, 1, struct.pack("<II", values, 1)
        else:
            kind, letter = (4, "I") if tag in (273, 279) else (3, "H")
            count, value = len(values), struct.pack(f"<{len(values)}{letter}", *values)
        if len(value) > 4:
            value, data = struct.pack("<I", at + len(data)), data + value
        tags.append(struct.pack("<HHI", tag, kind, count) + value.ljust(4, b"\0"))
    start = at + len(data)
    after = start + 2 + 12 * len(tags) + 4
    return data + struct.pack("<H", len(tags)) + b"".join(tags) + struct.pack("<I", 0 if is_last else after), start


def plain_file(pages):
    """Page after page; every offset of a page is known once those before it are written."""
    body, first, link = b"", None, None
    for number, picture in enumerate(pages, 1):
        written, start = directory(picture, 8 + len(body), number == len(pages))
        if link is not None:
            body = body[:link] + struct.pack("<I", start)
        body, first = body + written, first or start
        link = len(body) - 4
    return b"II*\0" + struct.pack("<I", first) + body


def rows(path, pages, codec, verdict):
    for number, picture in enumerate(pages, 1):
        form, is_lossy = canonical(picture), codec == "jpeg"
        photometric = "minisblack" if picture.model == "gray" else picture.model
        alpha = next((kind for kind in picture.extras if kind), None) or "none"
        yield (path, verdict, len(pages), number, picture.width, picture.height, picture.bits, picture.channels, 1,
               photometric, codec, picture.orientation, *picture.resolution, alpha,
               "near:40" if is_lossy else form.digest(), form.form)


def turned(picture, orientation):
    picture.orientation = orientation
    return picture


white = {"white_is_zero": True}
PAGES = {"bilevel": lambda: page("gray", 1, **white), "black": lambda: page("gray", 1), "four": lambda: page("gray", 4),
         "gray": lambda: page("gray", 8), "deep": lambda: page("gray", 16), "index": lambda: page("palette", 4),
         "colours": lambda: page("palette", 8), "rgb": lambda: page("rgb", 8), "rgb16": lambda: page("rgb", 16),
         "ink": lambda: page("cmyk", 8), "veil": lambda: page("gray", 8, 2, extras=["unassociated"]),
         "glass": lambda: page("rgb", 8, 4, extras=["unassociated"])}
# Name, pages, words of tiffcp.
FILES = [
    ("bilevel-g4", "bilevel", "-c g4"), ("bilevel-g3-1d", "bilevel", "-c g3:1d -r 8"),
    ("bilevel-g3-2d", "bilevel", "-c g3:2d"), ("bilevel-low-bit-first", "black", "-c g4 -f lsb2msb"),
    ("bilevel-packbits-tiles", "black", "-c packbits -t -w 32 -l 16"), ("gray-4-bits-lzw", "four", "-c lzw"),
    ("gray-big-endian", "gray", "-B -c none -r 7"), ("gray-bigtiff-zip", "gray", "-8 -c zip"),
    ("gray-16-zip-predictor", "deep", "-c zip:2"), ("palette-4-bits", "index", "-c packbits"),
    ("palette-lzw-tiles", "colours", "-c lzw -t -w 48 -l 32"), ("rgb-lzw-predictor", "rgb", "-c lzw:2 -r 5"),
    ("rgb-planes-zip", "rgb", "-p separate -c zip"), ("rgb-16-big-endian", "rgb16", "-B -c lzw:2"),
    ("rgb-jpeg-tiles", "rgb", "-c jpeg:r:95 -t -w 32 -l 32"), ("cmyk-lzw", "ink", "-c lzw:2"),
    ("gray-alpha", "veil", "-c zip:2"), ("rgb-alpha-planes", "glass", "-c zip -p separate"),
]


def main():
    table = []
    work = [(name, [PAGES[kind]()], words) for name, kind, words in FILES]
    work += [(f"turned-{way}", [turned(page("rgb", 8, shift=way), way)], "-c lzw:2") for way in (3, 5, 6, 8)]
    work.append(("three-pages", [page("gray", 1, **white), page("rgb", 8, shift=3), page("gray", 8, shift=9)], "-c zip"))
    work.append(("many-pages", [page("gray", 1, shift=7 * n, **white) for n in range(12)], "-c g4"))
    for name, pages, words in work:
        path, source = HERE / f"{name}.tif", HERE / "plain.tmp"
        source.write_bytes(plain_file(pages))
        subprocess.run(["tiffcp", *words.split(), source, path], check=True, stderr=subprocess.DEVNULL)
        source.unlink()
        codec = words.split("-c ")[1].split()[0].split(":r")[0]
        table += rows(path.name, pages, CODECS.get(codec, codec.split(":")[0].replace("zip", "deflate")), "good")
    whole = (HERE / "rgb-lzw-predictor.tif").read_bytes()
    (HERE / "damaged-data.tif").write_bytes(whole[:900] + b"\xff" * 200 + whole[1100:])
    table += rows("damaged-data.tif", [PAGES["rgb"]()], "lzw", "damaged")
    for name, data in (("cut", whole[:len(whole) // 2]), ("text", b"no image\n"), ("empty", b"")):
        (HERE / f"{name}.tif").write_bytes(data)
        table.append((f"{name}.tif", "unreadable" if name == "cut" else "not-tiff", 0, 0, *["-"] * 14))
    lines = ["\t".join(map(str, row)) for row in (COLUMNS, *table)]
    (HERE / "EXPECTED.tsv").write_text("\n".join(lines) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
