#!/usr/bin/python3
"""Random TIFF files of known samples: no output has other samples, no sound file is refused.

samples.py [--files N] [--seed S] [--first I] [--keep FOLDER]

The files are written here, without libtiff, and the outputs are read by the corpus judge's own readers.
File I of a seed is always the same; one in five is damaged and has to be refused by name. Left out is
what is documented as refused: tiles whose rows do not end at a byte, predictors for depths without one.
"""

import argparse
import os
import random
import struct
import sys
import zlib
from pathlib import Path
from types import SimpleNamespace

from trust import expect, finish, run, workspace  # first: it says what is missing

import numpy as np

sys.path.insert(0, str(Path(os.environ["PAGESTACK_SOURCE_DIR"]) / "tests/corpus"))
from output_readers import READERS  # noqa: E402
from picture import DecodeError, upright  # noqa: E402
from tiff_reader import REVERSED_BITS, TiffFile, decode_page  # noqa: E402

UNSIGNED, SIGNED, FLOAT, UNDEFINED = 1, 2, 3, 4
PLAIN, DEFLATE, PACKBITS, OLD_DEFLATE = 1, 8, 32773, 32946
WHITE_IS_ZERO, GRAY, RGB, PALETTE, CMYK = 0, 1, 2, 3, 5
COLOURS = {WHITE_IS_ZERO: 1, GRAY: 1, RGB: 3, PALETTE: 1, CMYK: 4}
ALPHAS = {0: None, 1: "associated", 2: "unassociated"}
MOST_BITS = 100_000  # a page: the coders in plain Python are slow
CONVERSIONS = {"tiff": ["-f", "tiff"], "lzw": ["-f", "tiff", "--compression", "lzw"],
               "png": ["-f", "png", "--separator", "_"], "bmp": ["-f", "bmp", "--separator", "_"]}
MAY_BE_LONG = (256, 257, 273, 278, 279, 322, 323, 324, 325)  # sizes, and the table of strips or tiles


def random_page(dice):
    page = SimpleNamespace(kind=dice.choice([UNSIGNED] * 6 + [SIGNED, FLOAT, FLOAT, UNDEFINED]), map=None)
    page.bits = dice.choice((1, 2, 4, 8, 8, 16, 32, 64, dice.randint(1, 64), dice.randint(3, 15)))
    if page.kind == FLOAT:
        page.bits = dice.choice((16, 24, 32, 64))
    page.photometric = dice.choice((WHITE_IS_ZERO, GRAY, GRAY, RGB, RGB, CMYK))
    if page.kind == UNSIGNED and page.bits <= 8 and dice.random() < 0.25:
        page.photometric = PALETTE
        page.map = np.array([256, *(dice.randrange(1 << 16) for _ in range((3 << page.bits) - 1))])
        page.map >>= dice.choice((0, 0, 0, 8))  # a map of values below 256 is one of 8 bits
    kinds = (0, 2) if page.photometric in (WHITE_IS_ZERO, PALETTE) else (0, 1, 2)
    most = 5 - COLOURS[page.photometric]
    page.extras = [dice.choice(kinds) for _ in range(dice.randint(0, most) * (dice.random() < 0.4))]
    page.samples = COLOURS[page.photometric] + len(page.extras)
    page.width, page.height = dice.choice(((70, 70), (9, 900), (900, 9)))
    page.width, page.height = dice.randint(1, page.width), dice.randint(1, page.height)
    while page.width * page.height * page.samples * page.bits > MOST_BITS:
        page.width, page.height = -(-page.width * 2 // 3), -(-page.height * 2 // 3)
    page.orientation, page.fill_order = dice.choice((1, 1, dice.randint(1, 8))), dice.choice((1, 1, 1, 1, 2))
    page.is_separate = page.samples > 1 and dice.random() < 0.4
    page.compression = dice.choice((PLAIN, PLAIN, PACKBITS, DEFLATE, DEFLATE, OLD_DEFLATE))
    page.predictor = 1
    if page.compression in (DEFLATE, OLD_DEFLATE) and dice.random() < 0.6:
        horizontal = page.bits in (8, 16, 32, 64) and (page.kind != FLOAT or dice.random() < 0.2)
        page.predictor = 2 if horizontal else 3 if page.kind == FLOAT else 1
    choose_blocks(page, dice)
    page.raw = random_samples(page, dice)
    choose_sparse(page, dice)
    return page


def choose_blocks(page, dice):
    """Strips or tiles: `block` is their width and height, `rows` what RowsPerStrip says, if it is there."""
    page.is_tiled, page.is_padded, page.rows = dice.random() < 0.4, dice.random() < 0.3, None
    if page.is_tiled:
        page.block = dice.choice((16, 16, 32, 48, 64)), dice.choice((16, 16, 32, 48, 64))
        odd = dice.randint(1, 50), dice.randint(1, 50)
        if dice.random() < 0.15 and odd[0] * page.bits * (1 if page.is_separate else page.samples) % 8 == 0:
            page.block = odd
    else:
        page.rows = dice.choice((dice.randint(1, page.height), dice.randint(1, 20), page.height, 0xFFFFFFFF, None))
        page.is_padded &= 0 < (page.rows or 0) <= 2 * page.height
        page.block = page.width, page.rows if page.is_padded else min(page.rows or page.height, page.height)
    page.places = [(plane, y, x) for plane in range(page.samples if page.is_separate else 1)
                   for y in range(0, page.height, page.block[1]) for x in range(0, page.width, page.block[0])]


def random_samples(page, dice):
    """Whole numbers of (height, width, samples), which are the bits of the samples.

    They fill the range that is shown, so that there is nothing to be said of it.
    """
    shape, noise = (page.height, page.width, page.samples), np.random.default_rng(dice.getrandbits(64))
    if page.kind == FLOAT:
        values = noise.uniform(0.01, 1, shape)
        if page.bits != 24 and values.size > 1000 and dice.random() < 0.5:
            values[noise.random(shape) < 0.1] = dice.choice((np.nan, np.inf, -1))
        return float_bits(values, page.bits)
    raw, look = noise.integers(0, 1 << 64, shape, np.uint64), dice.choice(("noise", "runs", "ramp"))
    if look == "runs":
        raw = raw[:, np.arange(page.width) // dice.randint(2, 30)]
    elif look == "ramp":
        y, x, c = np.indices(shape, np.uint64)
        raw = (5 * y + 3 * x + 37 * c) * ((1 << page.bits) // 61 | 1)
    return raw & np.uint64((1 << page.bits) - 1)


def float_bits(values, bits):
    if bits == 24:  # an exponent of 7 bits and a fraction of 16
        raw = float_bits(np.abs(values), 32)
        return (raw >> 7) - (64 << 16) | np.signbit(values).astype(np.uint64) << 23
    return values.astype(f"<f{bits // 8}").view(f"<u{bits // 8}").astype(np.uint64)


def float_values(raw, bits):
    if bits == 24:
        size = float_values((raw & 0x7FFFFF) + (64 << 16) << 7, 32)
        return np.where(raw >> 23, -size, size)
    return raw.astype(f"<u{bits // 8}").view(f"<f{bits // 8}").astype(np.float64)


def choose_sparse(page, dice):
    """Some strips or tiles are not in the file; their samples are 0 or what GDAL_NODATA says."""
    page.nodata, page.sparse, value = None, set(), 0
    if dice.random() < 0.2 and len(page.places) > 1:
        page.sparse = set(dice.sample(range(len(page.places)), dice.randrange(1, len(page.places))))
    if page.sparse and dice.random() < 0.5:
        value = dice.randrange(1 << page.bits)
        page.nodata = value - (1 << page.bits) * (page.kind == SIGNED and value >> page.bits - 1)
        if page.kind == FLOAT:
            page.nodata = dice.choice((-0.25, 8192.0))
            value = float_bits(np.array([page.nodata]), page.bits)[0]
    for index in page.sparse:
        block_of(page, index)[...] = value


def block_of(page, index):
    """The samples of a strip or tile, without those beyond the page."""
    plane, top, left = page.places[index]
    part = page.raw[top:top + page.block[1], left:left + page.block[0]]
    return part[:, :, plane:plane + 1] if page.is_separate else part


def encoded(page, index, order, dice):
    """The bytes of a strip or tile as they lie in the file."""
    values = block_of(page, index)
    height = page.block[1] if page.is_tiled or page.is_padded else len(values)
    beyond = (0, height - len(values)), (0, page.block[0] - values.shape[1]), (0, 0)
    values = np.pad(values, beyond, mode=dice.choice(("edge", "constant")))
    if page.predictor == 2:
        values[:, 1:] = values[:, 1:] - values[:, :-1]  # modulo 2^64, of which the lower bits are kept
    rows = packed(values.reshape(height, -1), page.bits, ">" if page.predictor == 3 else order)
    if page.predictor == 3:
        planes = rows.reshape(height, -1, page.bits // 8).transpose(0, 2, 1).reshape(height, -1)
        rows, step = planes.copy(), values.shape[2]
        rows[:, step:] -= planes[:, :-step]
    if page.compression == PLAIN:
        return rows.tobytes()
    return (packbits if page.compression == PACKBITS else deflate)(rows, dice)


def packed(values, bits, order):
    """Rows of numbers as rows of bytes."""
    if bits in (8, 16, 24, 32, 64):
        whole = values.astype(">u8", order="C").view(np.uint8).reshape(*values.shape, 8)[:, :, 8 - bits // 8:]
        return np.ascontiguousarray(whole[:, :, ::-1] if order == "<" else whole).reshape(len(values), -1)
    single = values[:, :, None] >> np.arange(bits - 1, -1, -1, dtype=np.uint64) & np.uint64(1)
    return np.packbits(single.astype(np.uint8).reshape(len(values), -1), axis=1)


def deflate(rows, dice):
    coder = zlib.compressobj(dice.randrange(10), zlib.DEFLATED, dice.randint(9, 15), 8, dice.randrange(5))
    data, cut = rows.tobytes(), dice.randrange(rows.size)
    start = coder.compress(data[:cut]) + (coder.flush(zlib.Z_FULL_FLUSH) if dice.random() < 0.2 else b"")
    return start + coder.compress(data[cut:]) + coder.flush()


def packbits(rows, dice):
    out = bytearray()
    for row in rows:
        at, data = 0, row.tobytes()
        while at < len(data):
            part = data[at:at + 128]
            same = len(part) - len(part.lstrip(part[:1]))
            if same > 1:
                out += bytes((257 - same, part[0]))
            else:
                same = min(dice.randint(1, 128), len(part))
                out += bytes((same - 1, *part[:same], *([128] if dice.random() < 0.02 else [])))
            at += same
    return bytes(out)


class Writer:
    """A TIFF file in the making: its parts lie at even places in any order, with gaps between them."""

    def __init__(self, dice):
        self.dice, self.order, self.is_big = dice, dice.choice("<>"), dice.random() < 0.4
        self.place = "Q" if self.is_big else "I"  # how offsets are stored
        head = self.pack("HHHQ", 43, 8, 0, 0) if self.is_big else self.pack("HI", 42, 0)
        self.data = bytearray((b"II" if self.order == "<" else b"MM") + head)

    def pack(self, codes, *values):
        return struct.pack(self.order + codes, *values)

    def put(self, blob):
        gap = self.dice.choice((0, 0, 0, self.dice.randrange(40)))
        self.data += self.dice.randbytes(gap + (len(self.data) + gap) % 2) + blob
        return len(self.data) - len(blob)

    def put_pages(self, pages, damage):
        size = struct.calcsize(self.place)
        order = self.dice.sample(range(len(pages)), len(pages))
        places = {index: self.put_page(pages[index], damage) for index in order}
        link = size  # in the header it lies behind as many bytes as it has itself
        for index in range(len(pages)):
            self.data[link:link + size] = self.pack(self.place, places[index][0])
            link = places[index][1]

    def put_page(self, page, damage):
        """Puts the page's data and its directory; returns where that lies, and its link to the next."""
        offsets, counts = [0] * len(page.places), [0] * len(page.places)
        for index in self.dice.sample(range(len(offsets)), len(offsets)):
            if index not in page.sparse:
                data = encoded(page, index, self.order, self.dice)
                if damage == "flipped bit" and index == page.victim:
                    data = flipped(data, self.dice)
                offsets[index] = self.put(data.translate(REVERSED_BITS) if page.fill_order == 2 else data)
                counts[index] = len(data)
        if damage == "offset 0":
            offsets[page.victim] = 0
        elif damage == "short count":
            counts[page.victim] = self.dice.randrange(1, counts[page.victim])
        elif damage == "short table":
            del offsets[page.victim:], counts[page.victim:]
        tags = {**self.tags(page), 324 if page.is_tiled else 273: offsets, 325 if page.is_tiled else 279: counts}
        entries = b"".join(self.entry(tag, tags[tag]) for tag in sorted(tags))
        directory = self.pack("Q" if self.is_big else "H", len(tags)) + entries
        return self.put(directory + self.pack(self.place, 0)), len(self.data) - struct.calcsize(self.place)

    def tags(self, page):
        """All but the table of strips or tiles. Some are left out where they say what holds without them."""
        tags = {256: [page.width], 257: [page.height], 258: [page.bits] * page.samples, 259: [page.compression],
                262: [page.photometric], 266: [page.fill_order], 274: [page.orientation], 277: [page.samples],
                278: [page.rows], 284: [1 + page.is_separate], 317: [page.predictor], 320: page.map,
                322: page.block[:1], 323: page.block[1:], 338: page.extras, 339: [page.kind] * page.samples,
                42113: f"{page.nodata}\0".encode()}
        there = {278: page.rows, 320: page.map is not None, 322: page.is_tiled, 323: page.is_tiled,
                 338: page.extras, 42113: page.nodata is not None}
        defaults = {258: {1}, 259: {PLAIN}, 266: {1}, 274: {1}, 277: {1}, 284: {1}, 317: {1}, 338: {0}, 339: {UNSIGNED}}
        for tag, values in defaults.items():
            if set(tags[tag]) == values and page.map is None and self.dice.random() < 0.3:
                there[tag] = False
        return {tag: values for tag, values in tags.items() if there.get(tag, True)}

    def entry(self, tag, values):
        codes = "B" if tag == 42113 else "HI" + self.place if tag in MAY_BE_LONG else "H"
        code = self.dice.choice([code for code in codes if max(values) < 1 << 8 * struct.calcsize("=" + code)])
        blob, room = self.pack(f"{len(values)}{code}", *values), struct.calcsize(self.place)
        blob = blob.ljust(room, b"\0") if len(blob) <= room else self.pack(self.place, self.put(blob))
        return self.pack("HH" + self.place, tag, {"B": 2, "H": 3, "I": 4, "Q": 16}[code], len(values)) + blob


def flipped(data, dice):
    """A Deflate stream with one bit turned over, of those that zlib finds."""
    while True:
        damaged = bytearray(data)
        damaged[dice.randrange(len(data))] ^= 1 << dice.randrange(8)
        try:
            zlib.decompress(damaged)
        except zlib.error:
            return bytes(damaged)


DAMAGES = {
    "flipped bit": lambda page: page.compression in (DEFLATE, OLD_DEFLATE),
    "offset 0": lambda page: True,
    "short count": lambda page: page.compression == PLAIN and not page.is_padded and page.width * page.bits > 8,
    "short table": lambda page: page.is_separate and page.victim > 0,
}


def make_file(path, dice, damage):
    """Writes a file and returns its pages."""
    pages = [random_page(dice) for _ in range(1 if damage else dice.choice((1, 1, 1, 2, 5)))]
    while damage:
        pages = [random_page(dice)]
        pages[0].victim = dice.choice((pages[0].samples, dice.getrandbits(16))) % len(pages[0].places)
        if not pages[0].sparse and DAMAGES[damage](pages[0]):
            break
    writer = Writer(dice)
    writer.put_pages(pages, damage)
    path.write_bytes(writer.data)
    return pages


def shown(page, most_bits):
    """What a picture has to hold, upright, and at which depth (any for a palette)."""
    is_small = page.samples == 1 and page.bits in (1, 2, 4) and page.kind != SIGNED and most_bits > 8
    bits = page.bits if is_small else 8 if page.bits <= 8 else most_bits
    full, top, colours = (1 << bits) - 1, (1 << page.bits) - 1, COLOURS[page.photometric]
    raw = page.raw ^ np.uint64(1 << page.bits - 1) if page.kind == SIGNED else page.raw
    raw = raw.astype(object) if page.bits > 32 else raw  # for exact products
    values = ((raw * (2 * full) + top) // (2 * top)).astype(np.uint64)
    if page.kind == FLOAT:
        values = np.clip(np.nan_to_num(float_values(page.raw, page.bits)), 0, 1) * full
        values = np.floor(values + 0.5).astype(np.uint64)
    colour = full - values[:, :, :1] if page.photometric == WHITE_IS_ZERO else values[:, :, :colours]
    if page.map is not None:
        colour = (page.map >> (8 if max(page.map) > 255 else 0)).reshape(3, -1).T[page.raw[:, :, 0].astype(int)]
    index, kind = next(((index, kind) for index, kind in enumerate(page.extras, colours) if kind), (0, 0))
    alpha = values[:, :, index:index + 1]
    if kind == 1:
        divided = np.minimum((colour * full + alpha // 2) // np.maximum(alpha, 1), full)
        colour = np.where(alpha == 0, 0, divided)
    colour = np.concatenate([colour, alpha], axis=2) if kind else colour
    return upright(colour, page.orientation), bits


def fault_of_picture(page, path):
    """What is wrong with the PNG or BMP file of a page, or None."""
    name = path.suffix[1:]
    picture, (values, bits) = READERS[name](path), shown(page, 16 if name == "png" else 8)
    if page.map is None and picture.bits != bits:
        return f"{picture.bits} bits instead of {bits}"
    if picture.stored_as[1] == "palette":  # read with an alpha channel
        values = np.dstack([values, np.full(values.shape[:2], 255)])[:, :, :4]
    if name == "bmp":
        values = np.broadcast_to(values, (*values.shape[:2], 3))
    return difference(picture.samples, values)


def fault_of_tiff(pages, index, path):
    """What is wrong with a page of a TIFF file, or None."""
    page, file = pages[index], TiffFile(path)
    if len(file.directories) != len(pages):
        return f"one of {len(file.directories)} pages instead of {len(pages)}"
    tags = file.directories[index].tags
    kind = tags.pop(339, (1,))[0]  # without it the samples are read as whole numbers
    picture = decode_page(file, index)
    found = kind, tags[262][0], picture.bits, list(picture.extras), picture.orientation
    wanted = page.kind, page.photometric, page.bits, [ALPHAS[kind] for kind in page.extras], page.orientation
    if found != wanted or (page.map is not None and list(tags[320]) != list(page.map)):
        return f"{found} instead of {wanted}, or another colour map"
    return difference(picture.samples, page.raw)


def difference(found, wanted):
    if found.shape != wanted.shape:
        return f"{found.shape} instead of {wanted.shape}"
    count = np.count_nonzero(found.astype(np.uint64) != wanted)
    return f"{count} of {wanted.size} samples differ" if count else None


def described(page):
    return " ".join(f"{name}={value}" for name, value in vars(page).items() if name not in ("raw", "map", "places"))


def check_sound(name, files, folder, ended):
    """All pages are there, and what is said on standard error is said of sparse ones and their tag."""
    told = set(ended.stderr.splitlines())
    for stem, pages in files.items():
        if any(page.nodata is not None for page in pages):
            told -= {line for line in told if f"/{stem}.tif: " in line and "left out: GDAL_NODATA" in line}
        for index, page in enumerate(pages):
            what, fault = f"{stem}.tif[{index + 1}]", None
            try:
                if name in ("tiff", "lzw"):
                    fault = fault_of_tiff(pages, index, folder / f"{stem}.tiff")
                elif page.photometric != CMYK and (name == "png" or not any(page.extras)):
                    # Inks have no one conversion, nor has alpha where it is laid over white.
                    fault = fault_of_picture(page, folder / f"{stem}_{index + 1}.{name}")
            except (DecodeError, OSError, LookupError) as error:
                fault = repr(error)
            lines = {line for line in told if f"/{what}: " in line}
            told -= lines
            expect(fault is None, f"{what} to {name}: {fault}; {described(page)}")
            expect(bool(lines) == bool(page.sparse), f"{what} to {name}: told {lines}; {described(page)}")
    expect(ended.returncode == 0 and not told, f"to {name}: exit {ended.returncode}, told {told}")


def check_damaged(name, files, folder, ended):
    """Nothing is there, and every file is named."""
    for stem, pages in files.items():
        made = [path.name for path in folder.glob(f"{stem}[._]*")]
        is_told = f"/{stem}.tif[1]: " in ended.stderr
        expect(is_told and not made, f"{stem} to {name}: {made}, told: {is_told}; {described(pages[0])}")
    expect(ended.returncode == 1, f"damaged files to {name}: exit {ended.returncode}")


def main():
    parser = argparse.ArgumentParser()
    for name, value in (("--files", 200), ("--seed", 1), ("--first", 0)):
        parser.add_argument(name, type=int, default=value)
    parser.add_argument("--keep", type=Path, help="a new folder, in which sources and outputs stay")
    options = parser.parse_args()
    folder = options.keep or workspace()
    files = {check_sound: {}, check_damaged: {}}
    (folder / "in").mkdir(parents=True)
    for number in range(options.first, options.first + options.files):
        dice = random.Random(f"{options.seed}/{number}")
        damage = dice.choice(list(DAMAGES)) if number % 5 == 4 else None
        stem = f"{number}-{damage}" if damage else f"{number}"
        files[check_damaged if damage else check_sound][stem] = make_file(folder / "in" / f"{stem}.tif", dice, damage)
    for check in filter(files.get, files):
        for name, words in CONVERSIONS.items():
            out = folder / f"{check.__name__} {name}"
            sources = (folder / "in" / f"{stem}.tif" for stem in files[check])
            check(name, files[check], out, run([*words, "-q", "-o", out, *sources], folder / "home"))
    finish(f"{options.files} files, seed {options.seed}")


if __name__ == "__main__":
    main()
