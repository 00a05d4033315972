#!/usr/bin/python3
"""Makes the benchmark's sources: make_corpus.py DIR

    fax.tif         10 A4 pages, 300 dpi, 1 bit, G4
    scan_gray.tif    4 A4 pages, 300 dpi, gray, LZW with predictor
    photo.tif        3 photographs of 6 megapixels, RGB, not compressed
    photo_lzw.tif    the same with LZW and predictor

The same bytes on every run of the same Pillow. The photographs are synthetic: soft shapes, texture and
sensor noise, which compress about as real ones do.
"""
import random
import sys
from pathlib import Path

import numpy as np
from PIL import Image, ImageChops, ImageDraw, ImageFont

A4 = (2480, 3508)
PHOTO = (3000, 2000)
PREDICTOR = {317: 2}
MIN_IS_WHITE = {262: 0}
SYLLABLES = ("ba", "cor", "de", "fen", "gi", "hal", "im", "ju", "kes", "lo", "mar", "ne", "or", "pil",
             "qua", "ris", "so", "tem", "un", "vel", "wi", "zo")


def fax_page(seed):
    return ImageChops.invert(letter(seed))


def letter(seed):
    """Lines of text, a table with ruled lines, some dust; 1 is ink."""
    dice = random.Random(seed)
    page = Image.new("1", A4, 0)
    draw, font = ImageDraw.Draw(page), ImageFont.load_default()
    y = 300
    while y < 2500:
        if dice.random() < 0.12:
            y += 70
            continue
        page.paste(_text_line(dice, font, 300 if dice.random() < 0.2 else 470), (250, y))
        y += 52
    for row in range(9):
        draw.line((250, 2600 + row * 80, 2230, 2600 + row * 80), fill=1, width=3)
    for column in range(7):
        draw.line((250 + column * 330, 2600, 250 + column * 330, 3240), fill=1, width=3)
    for _ in range(150):
        x, y = dice.randrange(A4[0]), dice.randrange(A4[1])
        draw.rectangle((x, y, x + dice.randrange(3), y + dice.randrange(3)), fill=1)
    return page


def _text_line(dice, font, width):
    words = []
    while sum(len(word) + 1 for word in words) < width // 6:
        words.append("".join(dice.choice(SYLLABLES) for _ in range(dice.randint(1, 4))))
    line = Image.new("L", (width, 12), 0)
    ImageDraw.Draw(line).text((0, 0), " ".join(words), fill=255, font=font)
    # Enlarged smoothly and cut at half: strokes with round edges, as scanners see them.
    return line.resize((width * 4, 44), Image.Resampling.BICUBIC).point(lambda v: v > 110, mode="1")


def gray_page(seed):
    """The letter on paper: uneven light, grain, noise."""
    rng = np.random.default_rng(seed)
    ink = np.asarray(letter(seed).convert("L").reduce(2).resize(A4, Image.Resampling.BILINEAR))
    paper = 225 + 12 * _smooth_noise(rng, A4, 6) + 3 * _smooth_noise(rng, A4, 300)
    noisy = paper * (1 - ink / 300) + rng.normal(0, 1.5, (A4[1], A4[0]))
    return Image.fromarray(np.clip(noisy, 0, 255).astype(np.uint8))


def photograph(seed):
    rng = np.random.default_rng(seed)
    width, height = PHOTO
    y, x = np.mgrid[0:height, 0:width].astype(np.float32)
    light = 130 + 60 * (y / height - 0.5)
    channels = []
    shapes = [(rng.uniform(0, width), rng.uniform(0, height), rng.uniform(80, 600),
               rng.uniform(-70, 70, 3)) for _ in range(25)]
    for channel in range(3):
        plane = light + 20 * _smooth_noise(rng, PHOTO, 8) + 9 * _smooth_noise(rng, PHOTO, 60)
        plane += 5 * _smooth_noise(rng, PHOTO, 500)
        for cx, cy, radius, strength in shapes:
            plane += np.where((x - cx) ** 2 + (y - cy) ** 2 < radius * radius, strength[channel], 0)
        channels.append(plane + rng.normal(0, 2.0, (height, width)))
    return Image.fromarray(np.clip(np.stack(channels, axis=2), 0, 255).astype(np.uint8))


def _smooth_noise(rng, size, cells):
    """Noise between about -1 and 1 with `cells` swings across the picture."""
    small = rng.uniform(-1, 1, (max(cells * size[1] // size[0], 2), cells)).astype(np.float32)
    return np.asarray(Image.fromarray(small).resize(size, Image.Resampling.BICUBIC))


def make_corpus(folder):
    """Writes what is missing of the four files; returns {path: number of pages}."""
    folder.mkdir(parents=True, exist_ok=True)
    wanted = {
        "fax.tif": (10, fax_page, {"compression": "group4", "tiffinfo": MIN_IS_WHITE}),
        "scan_gray.tif": (4, gray_page, {"compression": "tiff_lzw", "tiffinfo": PREDICTOR}),
        "photo.tif": (3, photograph, {}),
        "photo_lzw.tif": (3, photograph, {"compression": "tiff_lzw", "tiffinfo": PREDICTOR}),
    }
    made = {}
    for name, (count, draw, options) in wanted.items():
        path = folder / name
        made[path] = count
        if path.exists():
            continue
        pages = [draw(seed) for seed in range(count)]
        whole = path.with_suffix(".part")
        pages[0].save(whole, "TIFF", save_all=True, append_images=pages[1:], dpi=(300, 300), **options)
        whole.rename(path)
    return made


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    for source, total in make_corpus(Path(sys.argv[1])).items():
        print(f"{source}: {total} pages, {source.stat().st_size / 1e6:.1f} MB")
