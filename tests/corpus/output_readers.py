"""Readers of PNG, BMP, GIF and JPEG files: the pixels by Pillow, what it does not tell by their bytes."""
import struct
import zlib

import numpy as np
from PIL import Image

from picture import DecodeError, Picture

ONLY_ONCE = (b"IHDR", b"PLTE", b"pHYs", b"iCCP", b"tRNS", b"gAMA", b"sRGB", b"bKGD")  # all before the pixels


def _by_pillow(read):
    """Opens the file for `read`, which gets its bytes, too."""
    def reader(path):
        try:
            with open(path, "rb") as file:
                data = file.read()
            with Image.open(path) as picture:
                if picture.format != read.__name__[5:].upper() or getattr(picture, "n_frames", 1) != 1:
                    raise DecodeError(f"{picture.format}, or more than one picture")
                return read(data, picture)
        except (OSError, ValueError, SyntaxError, EOFError, LookupError, struct.error, zlib.error) as error:
            raise DecodeError(f"Pillow: {error!r}") from error
    return reader


def _samples(picture):
    pixels = np.asarray(picture)
    return pixels.reshape(*pixels.shape[:2], -1)


@_by_pillow
def read_png(data, picture):
    chunks = _png_chunks(data)
    depth, kind = chunks[b"IHDR"][8:10]
    if chunks[b"IHDR"][12] or (kind != 3 and b"tRNS" in chunks):
        raise DecodeError("interlaced, or with a transparent colour")
    bits, extras = depth, ("unassociated",) if kind in (3, 4, 6) else ()
    if kind == 3:
        colours = len(chunks[b"PLTE"]) // 3
        if not _samples(picture).max() < colours <= 1 << depth:
            raise DecodeError("a pixel names a colour beyond the palette, or it is too long")
        samples, bits = _samples(picture.convert("RGBA")), 8
    elif depth == 16 and kind != 0:
        samples = _deep_samples(picture, kind)
    else:
        samples = _samples(picture).astype(np.uint16 if depth == 16 else np.uint8)
        samples = samples // (255 // ((1 << depth) - 1)) if kind == 0 and depth in (2, 4) else samples
    result = Picture(samples, "gray" if kind in (0, 4) else "rgb", bits, extras=extras)
    result.stored_as = depth, "palette" if kind == 3 else result.model
    if b"pHYs" in chunks:
        x, y, unit = struct.unpack(">IIB", chunks[b"pHYs"])
        result.resolution = x, y, "metre" if unit == 1 else "none"
    if b"iCCP" in chunks:
        name, _, packed = chunks[b"iCCP"].partition(b"\0")
        if not 1 <= len(name) <= 79:
            raise DecodeError("iCCP has no name")
        result.icc = zlib.decompress(packed[1:])
    return result


def _deep_samples(picture, kind):
    """Pillow keeps 8 of 16 bits: the first of two bytes or, told that they are turned round, the second.
    Gray with alpha goes as four channels of a byte each."""
    planes = []
    for raw in ("RGBA",) if kind == 4 else ("RGB;16B", "RGB;16L") if kind == 2 else ("RGBA;16B", "RGBA;16L"):
        with Image.open(picture.filename) as again:
            if kind == 4:
                setattr(again, "_mode" if hasattr(again, "_mode") else "mode", "RGBA")
            again.tile = [(*again.tile[0][:3], raw)]
            planes.append(_samples(again).astype(np.uint16))
    high, low = (planes[0][:, :, ::2], planes[0][:, :, 1::2]) if kind == 4 else planes
    return high << 8 | low


def _png_chunks(data):
    found, position, name = {}, 8, b""
    while name != b"IEND":
        length, name = struct.unpack_from(">I4s", data, position)
        body = data[position + 8:position + 8 + length]
        if struct.unpack_from(">I", data, position + 8 + length)[0] != zlib.crc32(name + body):
            raise DecodeError(f"the checksum at {position} is wrong")
        if name in ONLY_ONCE and (name in found or b"IDAT" in found):
            raise DecodeError(f"{name} comes twice or after the pixels")
        found[name] = body
        position += 12 + length
    if position != len(data):
        raise DecodeError("the file does not end with IEND")
    return found


@_by_pillow
def read_bmp(data, picture):
    size, pixels_at, head, width, height, planes, depth, method, _, x, y, used = struct.unpack_from(
        "<I4xIIiiHHIIiiI", data, 2)
    colours = data[14 + head:14 + head + 4 * (used or 1 << depth)] if depth <= 8 else b""
    end = pixels_at + (width * depth + 31) // 32 * 4 * abs(height)
    if (head < 40 or planes != 1 or method != 0 or depth not in (1, 4, 8, 24, 32) or any(colours[3::4])
            or 14 + head + len(colours) > pixels_at or end > size or size != len(data)):
        raise DecodeError(f"the header is wrong, or not that of a file of {len(data)} bytes")
    result = Picture(_samples(picture.convert("RGB")), "rgb", 8)
    result.resolution = (x, y, "metre") if x and y else None
    result.stored_as = min(depth, 8), "gray" if depth <= 8 else "rgb"
    return result


@_by_pillow
def read_gif(data, picture):
    if not data.endswith(b"\0;"):
        raise DecodeError("the file does not end as a GIF file does")
    if picture.mode in ("L", "P") and "transparency" not in picture.info:
        return Picture(_samples(picture.convert("RGB")), "rgb", 8)
    return Picture(_samples(picture.convert("RGBA")), "rgb", 8, extras=("unassociated",))


@_by_pillow
def read_jpeg(data, picture):
    if not data.endswith(b"\xff\xd9"):
        raise DecodeError("not a whole JPEG file")
    frames, position = [], 2
    while data[position + 1] != 0xDA:
        if data[position] != 0xFF:
            raise DecodeError(f"no marker at {position}")
        if data[position + 1] in (0xC0, 0xC1, 0xC2):
            frames.append(data[position + 1])
        position += 2 + struct.unpack_from(">H", data, position + 2)[0]
    frame, = frames
    # Of CMYK, Pillow hands out plain ink.
    result = Picture(_samples(picture), {"L": "gray", "RGB": "rgb", "CMYK": "cmyk"}[picture.mode], 8)
    result.details = {"frame": frame}
    if "jfif_density" in picture.info:
        unit = {0: "none", 1: "inch", 2: "cm"}[picture.info["jfif_unit"]]
        result.resolution = *picture.info["jfif_density"], unit
    parts = [body for name, body in picture.applist if name == "APP2" and body.startswith(b"ICC_PROFILE\0")]
    if [tuple(part[12:14]) for part in parts] != [(i + 1, len(parts)) for i in range(len(parts))]:
        raise DecodeError("the parts of the profile are not numbered in order")
    result.icc = picture.info.get("icc_profile")
    return result


READERS = {"png": read_png, "bmp": read_bmp, "gif": read_gif, "jpeg": read_jpeg}
