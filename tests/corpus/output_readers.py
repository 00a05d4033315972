"""Readers of PNG, BMP, GIF and JPEG files: the pixels by Pillow, what it does not tell by their bytes."""
import struct

import numpy as np
from PIL import Image

from picture import DecodeError, Picture


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
        except (OSError, ValueError, SyntaxError, EOFError, LookupError, struct.error) as error:
            raise DecodeError(f"Pillow: {error!r}") from error
    return reader


def _samples(picture):
    pixels = np.asarray(picture)
    return pixels.reshape(*pixels.shape[:2], -1)


@_by_pillow
def read_png(data, picture):
    depth, kind, is_interlaced = data[24], data[25], data[28]
    if is_interlaced or (kind != 3 and "transparency" in picture.info) or data[-8:-4] != b"IEND":
        raise DecodeError("interlaced, with a transparent colour, or not whole")
    bits, extras = depth, ("unassociated",) if kind in (3, 4, 6) else ()
    if kind == 3:
        colours = len(picture.palette.palette) // 3
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
    if "dpi" in picture.info:
        result.resolution = *(dots / 0.0254 for dots in picture.info["dpi"]), "metre"
    elif "aspect" in picture.info:
        result.resolution = *picture.info["aspect"], "none"
    result.icc = picture.info.get("icc_profile")
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
    # Of CMYK, Pillow hands out plain ink.
    result = Picture(_samples(picture), {"L": "gray", "RGB": "rgb", "CMYK": "cmyk"}[picture.mode], 8)
    result.details = {"is progressive": "progressive" in picture.info}
    if "jfif_density" in picture.info:
        unit = {0: "none", 1: "inch", 2: "cm"}[picture.info["jfif_unit"]]
        result.resolution = *picture.info["jfif_density"], unit
    else:  # RGB that is stored as such: JFIF is for YCbCr and gray alone
        exif = picture.getexif()
        if 282 in exif and 283 in exif:
            unit = {2: "inch", 3: "cm"}.get(exif.get(296, 2), "none")
            result.resolution = float(exif[282]), float(exif[283]), unit
    result.icc = picture.info.get("icc_profile")
    return result


READERS = {"png": read_png, "bmp": read_bmp, "gif": read_gif, "jpeg": read_jpeg}
