#!/usr/bin/env python3
"""Draws the files that sources are copied from: make_seeds.py FOLDER

Sixteen TIFF files of one to nine pages, of the sizes and kinds that scanners give, so that a page takes a
good part of a second.
"""

import sys
from pathlib import Path

import numpy
from PIL import Image

folder = Path(sys.argv[1])
for number in range(16):
    random = numpy.random.default_rng(number)
    pages = []
    for page in range(1 + number * 5 % 9):
        height, width = 1170 + 20 * page, 827 + 30 * number
        x, y = numpy.meshgrid(numpy.arange(width), numpy.arange(height))
        shade = (x * (number + 1) // 7 + y * (page + 2) // 5) % 256
        noise = random.integers(0, 3, (height, width)) * (x % 8 == 0)
        gray = numpy.clip(shade + noise, 0, 255).astype(numpy.uint8)
        pages.append([Image.fromarray(gray), Image.fromarray(gray).convert("1", dither=0),
                      Image.fromarray(numpy.dstack([gray, gray[::-1], 255 - gray]))][number % 3])
    pages[0].save(folder / f"seed{number:02}.tif", save_all=True, append_images=pages[1:], dpi=(100, 100),
                  compression=["tiff_lzw", "group4", "tiff_adobe_deflate"][number % 3])
