"""A TIFF reader of the judge's own, so that pages are not judged by the code that wrote them.

It knows classic and BigTIFF, both byte orders, strips and tiles, contiguous and separate planes, any
number of bits, no compression, PackBits, LZW and Deflate with both predictors. What it does not know
goes through `tiffcp -c none` first; Pages does that by itself.
"""
import os
import shutil
import struct
import subprocess
import tempfile
import zlib

import numpy as np

from picture import DecodeError, Picture

TYPE_CODES = {1: "B", 2: "c", 3: "H", 4: "I", 5: "II", 6: "b", 7: "B", 8: "h", 9: "i", 10: "ii",
              11: "f", 12: "d", 13: "I", 16: "Q", 17: "q", 18: "Q"}
# Width to ICC profile, the tags that are looked at.
WIDTH, HEIGHT, BITS, COMPRESSION, PHOTOMETRIC, FILL_ORDER = 256, 257, 258, 259, 262, 266
STRIP_OFFSETS, ORIENTATION, SAMPLES, ROWS_PER_STRIP, STRIP_COUNTS = 273, 274, 277, 278, 279
X_RESOLUTION, Y_RESOLUTION, PLANAR, RESOLUTION_UNIT, PREDICTOR = 282, 283, 284, 296, 317
COLOR_MAP, TILE_WIDTH, TILE_HEIGHT, TILE_OFFSETS, TILE_COUNTS = 320, 322, 323, 324, 325
EXTRA_SAMPLES, SAMPLE_FORMAT, COEFFICIENTS, SUBSAMPLING, REFERENCE = 338, 339, 529, 530, 532
ICC_PROFILE = 34675
LARGEST_OWN_LZW = 256 * 1024  # plain Python is slow: more than this is left to tiffcp
LARGEST_OWN_PACKBITS = 4 * 1024 * 1024
REVERSED_BITS = bytes(int(f"{v:08b}"[::-1], 2) for v in range(256))


class NeedsTiffcp(DecodeError):
    """Right enough, but not for this reader."""


class Directory:
    """The tags of one page. Values are tuples of numbers; fractions are floats."""

    def __init__(self, order, tags):
        self.order = order
        self.tags = tags

    def get(self, tag, default=None):
        value = self.tags.get(tag)
        return default if not value else value

    def one(self, tag, default=None):
        value = self.tags.get(tag)
        return default if not value else value[0]


class TiffFile:
    """The bytes of a TIFF file and its main chain of directories."""

    def __init__(self, path):
        with open(path, "rb") as file:
            self.data = file.read()
        if self.data[:4] in (b"II*\0", b"II+\0"):
            self.order = "<"
        elif self.data[:4] in (b"MM\0*", b"MM\0+"):
            self.order = ">"
        else:
            raise DecodeError("not a TIFF file")
        self.big = b"+" in self.data[:4]
        self.directories = []
        offset = self._number("Q", 8) if self.big else self._number("I", 4)
        seen = set()
        while offset and offset not in seen:
            seen.add(offset)
            directory, offset = self._directory(offset)
            self.directories.append(directory)
        if offset:
            raise DecodeError("the chain of directories runs in a circle")

    def _number(self, code, offset):
        return self._numbers(code, 1, offset)[0]

    def _numbers(self, code, count, offset):
        try:
            return struct.unpack_from(f"{self.order}{count}{code}", self.data, offset)
        except struct.error as error:
            raise DecodeError(f"a number at {offset} lies beyond the end of the file") from error

    def _directory(self, offset):
        count = self._number("Q" if self.big else "H", offset)
        entry_size, head, inline = (20, 8, 8) if self.big else (12, 2, 4)
        tags = {}
        for i in range(count):
            entry = offset + head + i * entry_size
            tag, kind = self._numbers("H", 2, entry)
            length = self._number("Q" if self.big else "I", entry + 4)
            code = TYPE_CODES.get(kind)
            if code is None or tag in tags:
                continue
            where = entry + (12 if self.big else 8)
            if struct.calcsize("=" + code) * length > inline:
                where = self._number("Q" if self.big else "I", where)
            try:
                tags[tag] = self._values(kind, code, length, where)
            except DecodeError:
                continue  # a broken tag is the page's matter, not the file's
        after = offset + head + count * entry_size
        try:
            following = self._number("Q" if self.big else "I", after)
        except DecodeError:
            following = 0
        return Directory(self.order, tags), following

    def _values(self, kind, code, length, where):
        if kind in (1, 2, 7):
            if where + length > len(self.data):
                raise DecodeError("a tag lies beyond the end of the file")
            return self.data[where:where + length]
        if length > 50_000_000:
            raise DecodeError("a tag is too long")
        if kind in (5, 10):
            values = self._numbers(code[0], 2 * length, where)
            return tuple(values[i] / values[i + 1] if values[i + 1] else 0.0
                         for i in range(0, 2 * length, 2))
        return self._numbers(code, length, where)


def decode_page(file, index):
    """One page as a Picture; NeedsTiffcp when its compression is beyond this reader."""
    return _PageDecoder(file.data, file.directories[index]).picture()


class _PageDecoder:
    def __init__(self, data, directory):
        self.data, self.tags = data, directory
        self.width, self.height = directory.one(WIDTH), directory.one(HEIGHT)
        if not self.width or not self.height:
            raise DecodeError("the page has no size")
        self.channels = directory.one(SAMPLES, 1)
        depths = directory.get(BITS, (1,))
        if len(set(depths)) != 1:
            raise DecodeError("the samples differ in depth")
        self.bits = depths[0]
        self.compression = directory.one(COMPRESSION, 1)
        self.separate = directory.one(PLANAR, 1) == 2 and self.channels > 1
        self.kind = {1: "uint", 2: "int", 3: "float"}.get(directory.one(SAMPLE_FORMAT, 1), "other")
        self.photometric = directory.one(PHOTOMETRIC)
        self.subsampling = tuple(directory.get(SUBSAMPLING, (2, 2))) if self.photometric == 6 else (1, 1)
        if self.compression in (6, 7) and self.photometric == 6:
            raise NeedsTiffcp("JPEG")

    def picture(self):
        photometric = self.photometric
        model = {0: "gray", 1: "gray", 2: "rgb", 3: "palette", 5: "cmyk", 6: "ycbcr", 8: "lab",
                 9: "lab", 10: "lab"}.get(photometric, str(photometric))
        common = {"sample_kind": self.kind, "white_is_zero": photometric == 0,
                  "extras": self._extras(model), "palette": self._palette(model)}
        rows = self._rows()
        if self.bits == 1 and self.channels == 1:
            result = Picture(None, model, 1, packed=rows, size=(self.height, self.width), **common)
        else:
            result = Picture(rows, model, self.bits, **common)
        result.orientation = self.tags.one(ORIENTATION, 1)
        result.compression = self.compression
        result.icc = bytes(self.tags.get(ICC_PROFILE, b"")) or None
        x, y = self.tags.one(X_RESOLUTION), self.tags.one(Y_RESOLUTION)
        if x is not None and y is not None:
            unit = {1: "none", 2: "inch", 3: "cm"}.get(self.tags.one(RESOLUTION_UNIT, 2), "none")
            result.resolution = (x, y, unit)
        result.details = {"photometric": photometric, "coefficients": self.tags.get(COEFFICIENTS),
                          "reference": self.tags.get(REFERENCE)}
        return result

    def _extras(self, model):
        colours = {"gray": 1, "palette": 1, "cmyk": 4}.get(model, 3)
        names = {1: "associated", 2: "unassociated"}
        listed = [names.get(v) for v in self.tags.get(EXTRA_SAMPLES, ())]
        extra = max(self.channels - colours, 0)
        return (listed + [None] * extra)[:extra]

    def _palette(self, model):
        if model != "palette":
            return None
        values = self.tags.get(COLOR_MAP, ())
        entries = 1 << self.bits
        if len(values) < 3 * entries:
            raise DecodeError("the palette is too short")
        return np.array(values[:3 * entries], np.uint16).reshape(3, entries).T.copy()

    def _rows(self):
        """All samples as (height, width, channels); one-bit pages as packed rows."""
        if self.tags.get(TILE_OFFSETS) or self.tags.get(TILE_WIDTH):
            block = self.tags.one(TILE_WIDTH), self.tags.one(TILE_HEIGHT)
            offsets = self.tags.get(TILE_OFFSETS) or self.tags.get(STRIP_OFFSETS, ())
            counts = self.tags.get(TILE_COUNTS) or self.tags.get(STRIP_COUNTS, ())
        else:
            block = self.width, min(self.tags.one(ROWS_PER_STRIP, self.height) or 1, self.height)
            offsets = self.tags.get(STRIP_OFFSETS, ())
            counts = self.tags.get(STRIP_COUNTS, ())
        if self.compression == 1 and len(counts) != len(offsets):
            raise NeedsTiffcp("no byte counts")
        if not all(block):
            raise DecodeError("tiles without a size")
        self._check_own_reading(counts)
        tiled = bool(self.tags.get(TILE_WIDTH))
        across = -(-self.width // block[0]) if tiled else 1
        down = -(-self.height // block[1])
        planes = self.channels if self.separate else 1
        if len(offsets) < across * down * planes or len(counts) < len(offsets):
            raise DecodeError("strips are missing")
        per_pixel = 1 if self.separate else self.channels
        packed = self.bits == 1 and self.channels == 1
        if packed and tiled and block[0] % 8:
            raise NeedsTiffcp("tiles that do not end at a byte")
        result = None
        for plane in range(planes):
            for index in range(across * down):
                number = plane * across * down + index
                top, left = index // across * block[1], index % across * block[0]
                rows = block[1] if tiled else min(block[1], self.height - top)
                piece = self._block(offsets[number], counts[number], block[0], rows, per_pixel, packed)
                if result is None:
                    shape = ((self.height, (self.width + 7) // 8) if packed
                             else (self.height, self.width, self.channels))
                    result = np.zeros(shape, piece.dtype)
                if packed:
                    left //= 8
                target = result[top:top + rows, left:left + piece.shape[1]]
                part = piece[:target.shape[0], :target.shape[1]]
                if packed:
                    target[:] = part
                elif self.separate:
                    target[:, :, plane] = part[:, :, 0]
                else:
                    target[:] = part
        return result

    def _check_own_reading(self, counts):
        if self.compression not in (1, 5, 8, 32773, 32946):
            raise NeedsTiffcp(f"compression {self.compression}")
        if self.compression == 5 and sum(counts) > LARGEST_OWN_LZW:
            raise NeedsTiffcp("much LZW")
        if self.compression == 32773 and sum(counts) > LARGEST_OWN_PACKBITS:
            raise NeedsTiffcp("much PackBits")
        predictor = self.tags.one(PREDICTOR, 1)
        if self.compression in (5, 8, 32946) and predictor == 2 and self.bits not in (8, 16, 32, 64):
            raise NeedsTiffcp(f"predictor {predictor}")

    def _block(self, offset, count, width, rows, per_pixel, packed):
        if offset + count > len(self.data):
            raise DecodeError("a strip lies beyond the end of the file")
        data = self.data[offset:offset + count]
        if self.tags.one(FILL_ORDER, 1) == 2:
            data = data.translate(REVERSED_BITS)
        across, down = self.subsampling
        subsampled = (across, down) != (1, 1) and not self.separate
        if subsampled:
            units = -(-width // across), -(-rows // down)
            row_bytes, lines = units[0] * (across * down + 2), units[1]
        else:
            row_bytes, lines = (width * per_pixel * self.bits + 7) // 8, rows
        data = self._decompressed(data, row_bytes * lines)
        if len(data) < row_bytes * lines:
            raise DecodeError(f"a strip has {len(data)} bytes instead of {row_bytes * lines}")
        table = np.frombuffer(data, np.uint8, row_bytes * lines).reshape(lines, row_bytes)
        if packed:
            return table
        if subsampled:
            return _full_size_ycbcr(table, units, across, down)[:rows, :width]
        predictor = self.tags.one(PREDICTOR, 1) if self.compression in (5, 8, 32946) else 1
        if predictor == 3:
            table = _undo_float_differences(table, self.bits // 8, per_pixel)
        order = ">" if predictor == 3 else self.tags.order
        piece = unpack_rows(table, width, per_pixel, self.bits, self.kind, order)
        if predictor == 2:
            whole = piece.view(f"u{piece.dtype.itemsize}")  # differences are of whole numbers always
            piece = np.cumsum(whole, axis=1, dtype=whole.dtype).view(piece.dtype)
        return piece

    def _decompressed(self, data, expected):
        if self.compression == 1:
            return data
        if self.compression == 5:
            return unpack_lzw(data, expected)
        if self.compression == 32773:
            return unpack_packbits(data, expected)
        try:
            return zlib.decompressobj().decompress(data)
        except zlib.error as error:
            raise DecodeError(f"Deflate: {error}") from error


def _undo_float_differences(table, sample_bytes, per_pixel):
    """Rows hold the highest bytes of all samples, then the next ones, as differences of bytes."""
    rows, row_bytes = table.shape
    summed = np.cumsum(table.reshape(rows, -1, per_pixel), axis=1, dtype=np.uint8)
    planes = summed.reshape(rows, sample_bytes, row_bytes // sample_bytes)
    return planes.transpose(0, 2, 1).reshape(rows, row_bytes)


def _full_size_ycbcr(table, units, across, down):
    cells = table.reshape(units[1], units[0], across * down + 2)
    luma = cells[:, :, :-2].reshape(units[1], units[0], down, across)
    luma = luma.transpose(0, 2, 1, 3).reshape(units[1] * down, units[0] * across)
    blue, red = (cells[:, :, i].repeat(down, axis=0).repeat(across, axis=1) for i in (-2, -1))
    return np.stack([luma, blue, red], axis=2)


def unpack_rows(table, width, per_pixel, bits, kind, order):
    """Rows of bytes as (rows, width, per_pixel) numbers of the machine's byte order."""
    rows, count = len(table), width * per_pixel
    if bits in (8, 16, 32, 64):
        letter = {"uint": "u", "other": "u", "int": "i", "float": "f"}[kind]
        if letter == "f" and bits == 8:
            raise DecodeError("8-bit floating point")
        wire = np.dtype(f"{order}{letter}{bits // 8}")
        values = np.ascontiguousarray(table[:, :count * bits // 8]).view(wire)
        return values.astype(wire.newbyteorder("=")).reshape(rows, width, per_pixel)
    if bits == 24:
        parts = table[:, :count * 3].reshape(rows, count, 3).astype(np.uint32)
        first, last = (2, 0) if order == "<" else (0, 2)
        values = parts[:, :, first] << 16 | parts[:, :, 1] << 8 | parts[:, :, last]
    elif bits == 1:
        values = np.unpackbits(table, axis=1, count=count)
    elif bits in (2, 4):
        per_byte = 8 // bits
        shifts = np.arange(8 - bits, -1, -bits, dtype=np.uint8)
        values = (table[:, :, None] >> shifts & ((1 << bits) - 1)).reshape(rows, -1)
        values = values[:, :count]
        assert values.shape[1] == count <= table.shape[1] * per_byte
    elif 1 < bits < 64:
        single = np.unpackbits(table, axis=1, count=count * bits).reshape(rows, count, bits)
        values = np.zeros((rows, count), np.uint32 if bits < 32 else np.uint64)
        for bit in range(bits):
            values = values * values.dtype.type(2) + single[:, :, bit]
        if bits <= 16:
            values = values.astype(np.uint8 if bits <= 8 else np.uint16)
    else:
        raise DecodeError(f"{bits} bits a sample")
    if kind not in ("uint", "other"):
        raise DecodeError(f"{kind} samples of {bits} bits")
    return values.reshape(rows, width, per_pixel)


def unpack_packbits(data, expected):
    out = bytearray()
    position, end = 0, len(data)
    while position < end and len(out) < expected:
        head = data[position]
        if head < 128:
            out += data[position + 1:position + 2 + head]
            position += 2 + head
        elif head == 128:
            position += 1
        else:
            out += data[position + 1:position + 2] * (257 - head)
            position += 2
    return bytes(out)


def unpack_lzw(data, expected):
    if len(data) >= 2 and data[0] == 0 and data[1] & 1:
        raise NeedsTiffcp("LZW of the old bit order")
    roots = [bytes((v,)) for v in range(256)] + [b"", b""]
    table, width, previous = list(roots), 9, None
    out, length = [], 0
    window, held = 0, 0
    for byte in data:
        window = window << 8 | byte
        held += 8
        if held < width:
            continue
        held -= width
        code = window >> held
        window &= (1 << held) - 1
        if code == 256:
            table, width, previous = list(roots), 9, None
            continue
        if code == 257:
            break
        if previous is None:
            if code > 255:
                raise DecodeError("LZW begins with an unknown code")
            entry = table[code]
        else:
            if code < len(table):
                entry = table[code]
            elif code == len(table):
                entry = previous + previous[:1]
            else:
                raise DecodeError("LZW names an unknown code")
            table.append(previous + entry[:1])
            # The width grows one code early.
            if len(table) >= (1 << width) - 1 and width < 12:
                width += 1
        out.append(entry)
        length += len(entry)
        if length >= expected:
            break
        previous = entry
    return b"".join(out)


class Pages:
    """The pages of a file in order, decoded one at a time; a page that fails is a DecodeError."""

    def __init__(self, path, scratch):
        self.file = TiffFile(path)
        self._path, self._scratch = path, scratch
        self._plain = None

    def __len__(self):
        return len(self.file.directories)

    def __iter__(self):
        for index in range(len(self)):
            yield self.page(index)

    def page(self, index):
        """A Picture, or the DecodeError that it could not be."""
        try:
            try:
                return decode_page(self.file, index)
            except NeedsTiffcp:
                return self._through_tiffcp(index)
        except DecodeError as error:
            return error

    def _through_tiffcp(self, index):
        original = self.file.directories[index]
        if self._plain is None:
            self._plain = uncompressed_copy(self._path, self._scratch, None)
        if self._plain and len(self._plain.directories) == len(self):
            plain, number = self._plain, index
        else:
            plain, number = uncompressed_copy(self._path, self._scratch, index), 0
        if not plain or len(plain.directories) <= number:
            raise DecodeError("tiffcp cannot read it")
        result = decode_page(plain, number)
        result.compression = original.one(COMPRESSION, 1)
        result.icc = bytes(original.get(ICC_PROFILE, b"")) or None
        return result


def uncompressed_copy(path, scratch, index):
    """A TiffFile without compression of the whole file or of one page; False when tiffcp fails."""
    folder = tempfile.mkdtemp(dir=scratch)
    try:
        # A plain name: tiffcp takes what follows a comma for page numbers.
        source = os.path.join(folder, "source.tif")
        os.symlink(os.path.abspath(path), source)
        target = os.path.join(folder, "plain.tif")
        named = source if index is None else f"{source},{index}"
        done = subprocess.run(["tiffcp", "-c", "none", named, target], capture_output=True,
                              timeout=60, check=False)
        if done.returncode != 0 or not os.path.exists(target):
            return False
        return TiffFile(target)
    except (subprocess.TimeoutExpired, DecodeError):
        return False
    finally:
        shutil.rmtree(folder, ignore_errors=True)
