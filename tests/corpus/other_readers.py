"""Readers of BMP (own), GIF and JPEG (Pillow for the pixels, own for what is around them)."""
import struct

import numpy as np
from PIL import Image

from picture import DecodeError, Picture
from tiff_reader import unpack_rows


def read_bmp(path):
    with open(path, "rb") as file:
        data = file.read()
    if data[:2] != b"BM":
        raise DecodeError("not a BMP file")
    file_size, pixels_at = struct.unpack_from("<I4xI", data, 2)
    if file_size != len(data):
        raise DecodeError(f"the header says {file_size} bytes, the file has {len(data)}")
    head, width, height, planes, depth, method, _, x, y, used = struct.unpack_from(
        "<IiiHHIIiiI", data, 14)
    if head < 40 or planes != 1 or method != 0 or depth not in (1, 4, 8, 24, 32):
        raise DecodeError(f"header of {head} bytes, {depth} bits, compression {method}")
    row_bytes = (width * depth + 31) // 32 * 4
    rows = abs(height)
    if pixels_at + row_bytes * rows > len(data):
        raise DecodeError("rows are missing")
    table = np.frombuffer(data, np.uint8, row_bytes * rows, pixels_at).reshape(rows, row_bytes)
    if height > 0:
        table = table[::-1]
    if depth >= 24:
        step = depth // 8
        colours = table[:, :width * step].reshape(rows, width, step)[:, :, 2::-1]
        result = Picture(colours, "rgb", 8)
    else:
        result = _indexed_bmp(data, table, head, depth, width, used or 1 << depth, pixels_at)
    result.resolution = (x, y, "metre") if x and y else None
    result.details = {"bits a pixel": depth}
    return result


def _indexed_bmp(data, table, head, depth, width, colours, pixels_at):
    begin = 14 + head
    if begin + 4 * colours > pixels_at or colours > 1 << depth:
        raise DecodeError(f"{colours} colours do not fit")
    entries = np.frombuffer(data, np.uint8, 4 * colours, begin).reshape(colours, 4)
    if np.any(entries[:, 3]):
        raise DecodeError("the reserved byte of a colour is not 0")
    palette = np.zeros((1 << depth, 3), np.uint8)
    palette[:colours] = entries[:, 2::-1]
    samples = unpack_rows(table, width, 1, depth, "uint", "<")
    if int(samples.max()) >= colours:
        raise DecodeError("a pixel names a colour beyond the palette")
    return Picture(samples, "palette", depth, palette=palette)


def read_gif(path):
    try:
        with Image.open(path) as picture:
            if picture.format != "GIF" or getattr(picture, "n_frames", 1) != 1:
                raise DecodeError("not a GIF file of one picture")
            if picture.mode in ("L", "P") and "transparency" not in picture.info:
                pixels = np.asarray(picture.convert("RGB"))
                extras = ()
            else:
                pixels = np.asarray(picture.convert("RGBA"))
                extras = ("unassociated",)
    except (OSError, ValueError, SyntaxError, EOFError) as error:
        raise DecodeError(f"Pillow: {error}") from error
    return Picture(pixels, "rgb", 8, extras=extras)


def read_jpeg(path):
    with open(path, "rb") as file:
        data = file.read()
    segments = _jpeg_segments(data)
    try:
        with Image.open(path) as picture:
            if picture.format != "JPEG":
                raise DecodeError("not a JPEG file")
            pixels = np.asarray(picture)
            mode = picture.mode
    except (OSError, ValueError, SyntaxError) as error:
        raise DecodeError(f"Pillow: {error}") from error
    model = {"L": "gray", "RGB": "rgb", "CMYK": "cmyk"}[mode]  # of CMYK Pillow hands out plain ink
    result = Picture(pixels.reshape(pixels.shape[0], pixels.shape[1], -1), model, 8)
    frames = [(kind, body) for kind, body in segments if kind in (0xC0, 0xC1, 0xC2)]
    if len(frames) != 1:
        raise DecodeError("no single frame")
    result.details = {"frame": frames[0][0], "components": frames[0][1][5]}
    for kind, body in segments:
        if kind == 0xE0 and body.startswith(b"JFIF\0"):
            unit, x, y = struct.unpack_from(">BHH", body, 7)
            result.resolution = (x, y, {0: "none", 1: "inch", 2: "cm"}[unit])
    result.icc = _jpeg_profile(segments)
    return result


def _jpeg_segments(data):
    if data[:2] != b"\xff\xd8" or data[-2:] != b"\xff\xd9":
        raise DecodeError("not a whole JPEG file")
    segments, position = [], 2
    while True:
        if position + 4 > len(data) or data[position] != 0xFF:
            raise DecodeError(f"no marker at {position}")
        kind = data[position + 1]
        length, = struct.unpack_from(">H", data, position + 2)
        segments.append((kind, data[position + 4:position + 2 + length]))
        if kind == 0xDA:
            return segments
        position += 2 + length


def _jpeg_profile(segments):
    head = b"ICC_PROFILE\0"
    parts = [body[len(head):] for kind, body in segments if kind == 0xE2 and body.startswith(head)]
    if not parts:
        return None
    if [part[0] for part in parts] != list(range(1, len(parts) + 1)) or any(
            part[1] != len(parts) for part in parts):
        raise DecodeError("the parts of the profile are not numbered in order")
    return b"".join(part[2:] for part in parts)
