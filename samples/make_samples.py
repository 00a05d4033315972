#!/usr/bin/env python3
"""Makes the sample files beside this script; see README.md for what each one is. Needs Pillow.

The same versions of Pillow and its libtiff give the same bytes every time.
"""

import math
import random
import struct
from pathlib import Path

from PIL import Image, ImageDraw, TiffImagePlugin

FOLDER = Path(__file__).resolve().parent
PHOTOMETRIC, ORIENTATION, PREDICTOR = 262, 274, 317
ROW_0_AT_THE_RIGHT = 6

# Capital letters as pen strokes on a grid 4 wide and 6 high, y down: each pair of digits is a point,
# a space lifts the pen.
STROKES = {
    "A": "0620 2046 1434", "B": "0006 003041423303 33444536 3606", "C": "41301001051636 3645",
    "D": "0006 00304142453606", "E": "400006 0333 0646", "F": "400006 0333",
    "G": "413010010516364543 4323", "H": "0006 4046 0343", "I": "1030 2026 1636",
    "J": "404536160504", "K": "0006 4003 0346", "L": "000646", "M": "0600244046", "N": "06004640",
    "O": "103041453616050110", "P": "0006 003041423303", "Q": "103041453616050110 2446",
    "R": "0006 003041423303 2346", "S": "413010010213334445361605", "T": "0040 2026",
    "U": "000516364540", "V": "002640", "W": "0016243640", "X": "0046 4006", "Y": "0023 4023 2326",
    "Z": "00400646", "0": "103041453616050110", "1": "1120 2026 1636", "2": "01103041420646",
    "3": "011030414233 13334445361605", "4": "36300444", "5": "4000023343453606",
    "6": "4130100105163645443303", "7": "004016", "8": "103041423313020110 1333444536160504 0413",
    "9": "05163645413010010213334342", ".": "2626", ",": "2517", "-": "1333", ":": "2222 2525",
}

TEXT = """THIS PAGE WAS DRAWN
BY A SCRIPT.

IT IS ONE BIT DEEP, 300 DOTS
TO THE INCH, AND PACKED AS A
FAX MACHINE OF GROUP 4 PACKS IT:
EACH ROW TELLS ONLY WHERE IT
DIFFERS FROM THE ROW ABOVE.

WHAT TO TRY WITH IT:
1. MAKE A PNG, STILL ONE BIT.
2. MAKE A GIF OF TWO COLOURS.
3. MAKE A TIFF IN G3.

ALL OF THEM SHOW THE SAME DOTS."""


def write(draw, text, left, top, height, ink):
    """Writes `text` with letters `height` pixels high, its first line's upper left corner given."""
    unit = height / 6
    pen = max(1, round(unit * 0.8))

    def dot(x, y):
        draw.ellipse([x - pen / 2, y - pen / 2, x + pen / 2, y + pen / 2], fill=ink)

    for row, line in enumerate(text.split("\n")):
        for column, letter in enumerate(line):
            x0, y0 = left + column * unit * 6, top + row * unit * 11
            for stroke in STROKES.get(letter, "").split():
                points = [(x0 + int(stroke[i]) * unit, y0 + int(stroke[i + 1]) * unit)
                          for i in range(0, len(stroke), 2)]
                draw.line(points, fill=ink, width=pen)
                for point in points:
                    dot(*point)


def text_page(size, text, margin, height, paper, ink):
    page = Image.new("1", size, paper)
    write(ImageDraw.Draw(page), text, margin, margin, height, ink)
    return page


def landscape(width, height):
    """A hazy evening: hills under a sun, with some grain, 8 bits of gray."""
    grain = random.Random(1)
    picture = Image.new("L", (width, height))
    for y in range(height):
        for x in range(width):
            sun = math.hypot(x - width * 0.68, y - height * 0.3) / height
            shade = 150 + 60 * y / height + 80 * math.exp(-18 * sun * sun)
            for distance in range(4):
                ridge = height * (0.45 + 0.13 * distance) + height * 0.07 * (
                    math.sin(x / width * (7 + 3 * distance) + distance)
                    + 0.4 * math.sin(x / width * 23 + 2 * distance))
                if y > ridge:
                    shade = 150 - 35 * distance + 30 * (y - ridge) / height
            picture.putpixel((x, y), max(0, min(255, round(shade + grain.uniform(-2, 2)))))
    return picture


def badge(size):
    """A coloured disc that fades into nothing at its rim; the alpha is straight."""
    picture = Image.new("RGBA", (size, size))
    for y in range(size):
        for x in range(size):
            distance = math.hypot(x - size / 2 + 0.5, y - size / 2 + 0.5) / (size / 2)
            alpha = max(0, min(255, round((1 - distance) * 4 * 255)))
            picture.putpixel((x, y), (255 * x // size, 255 * y // size, 160, alpha))
    write(ImageDraw.Draw(picture), "RGBA", size * 0.2, size * 0.43, size * 0.16, (255, 255, 255, 255))
    return picture


def signpost(width, height):
    """A picture that tells where up is."""
    picture = Image.new("RGB", (width, height), (245, 240, 225))
    draw = ImageDraw.Draw(picture)
    draw.rectangle([0, height * 0.8, width, height], fill=(70, 130, 60))
    draw.polygon([(width * 0.5, height * 0.12), (width * 0.8, height * 0.45),
                  (width * 0.2, height * 0.45)], fill=(190, 40, 40))
    draw.rectangle([width * 0.42, height * 0.45, width * 0.58, height * 0.86], fill=(120, 80, 40))
    write(draw, "UP", width * 0.44, height * 0.3, height * 0.1, (255, 255, 255))
    return picture


def save(name, *pages):
    """`pages` are pairs of an image and its options."""
    with TiffImagePlugin.AppendingTiffWriter(str(FOLDER / name), new=True) as file:
        for image, options in pages:
            image.save(file, "TIFF", **options)
            file.newFrame()


def show_zero_as_white(name):
    """Turns the one page of a file over, as scanners store fax pages; Pillow writes 1 as white only."""
    data = bytearray((FOLDER / name).read_bytes())
    directory, = struct.unpack_from("<I", data, 4)
    count, = struct.unpack_from("<H", data, directory)
    for entry in range(directory + 2, directory + 2 + 12 * count, 12):
        if struct.unpack_from("<H", data, entry)[0] == PHOTOMETRIC:
            struct.pack_into("<H", data, entry + 8, 0)
            (FOLDER / name).write_bytes(data)
            return
    raise ValueError(f"{name} has no photometric interpretation")


def options(compression, dpi, **tags):
    return {"compression": compression, "dpi": (dpi, dpi), "tiffinfo": tags.get("tags", {})}


def main():
    save("text-page.tif", (text_page((1748, 2480), TEXT, 170, 48, 0, 1), options("group4", 300)))
    show_zero_as_white("text-page.tif")
    save("gray-photo.tif",
         (landscape(240, 160), options("tiff_lzw", 150, tags={PREDICTOR: 2})))
    save("transparent-badge.tif",
         (badge(128), options("tiff_lzw", 72, tags={PREDICTOR: 2})))
    save("three-pages.tif",
         (text_page((850, 600), "PAGE ONE\n\nBLACK AND WHITE", 80, 48, 1, 0), options("group4", 200)),
         (landscape(96, 128), options("tiff_lzw", 100)),
         (signpost(90, 60), options("packbits", 72)))
    upright = signpost(200, 150)
    save("turned.tif", (upright.transpose(Image.Transpose.ROTATE_90),
                        options("tiff_lzw", 100, tags={ORIENTATION: ROW_0_AT_THE_RIGHT})))


if __name__ == "__main__":
    main()
