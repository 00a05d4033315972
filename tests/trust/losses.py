#!/usr/bin/env python3
"""Files that once lost pixels or tags without a word: what is said of them, and what must be right.

They stand beside the checkout in shared/repro; without them the test counts as skipped.
"""
import re

from trust import BESIDE, Image, expect, finish, run, skip, workspace

FILES = BESIDE / "repro"
# File, words, exit code, what standard error says ("" is silence).
RUNS = [
    ("sparse_tile_40.tif", "-f png", 0, r"\[1\]: warning: 1 of its 4 tiles has no data in the file"),
    ("zero_off_valid_count.tif", "-f bmp", 1, r"\[1\]: strip 1 of the page lies in the header"),
    ("planar_wrong.tif", "-f png", 1, r"\[1\]: the table of its strips is too short, 1 of 3"),
    ("deflate_damaged_1.tif", "-f jpg", 1, r"\[1\]: its Deflate data are damaged"),
    ("jpeg_lost_last_rst.tif", "-f png", 1, r"\[1\]: .*restart markers"),
    ("checker_640.tif", "-f tiff --compression g3", 0, ""),
    ("checker_640.tif", "-f tiff --compression g4", 0, ""),
    ("float255.tif", "-f png", 0, r"\[1\]: warning: its samples lie between 0 and 255, and 0 to 1 is shown"),
    ("u32small.tif", "-f png", 0, r"\[1\]: warning: its samples lie between 1000 and 4095,"),
    ("float255.tif", "-f tiff", 0, ""),
    ("geo_exif.tiff", "-f tiff", 0, ": warning: 3 tags left out: tag 37510, tag 50839, tag 65000$"),
]

if not FILES.is_dir():
    skip(f"there is no {FILES}")
folder = workspace()
for number, (name, words, code, said) in enumerate(RUNS):
    out, what = folder / str(number), f"{name} {words}"
    ended = run([*words.split(), "-q", "-o", out, FILES / name], folder / "home")
    made, lines = list(out.glob("*")), ended.stderr.splitlines()
    expect(ended.returncode == code and bool(made) == (code == 0), f"{what}: exit {ended.returncode}, {made}")
    expect(len(lines) == bool(said) and (not said or re.search(name + said, lines[0])), f"{what}: {lines}")
    if made and not said:
        same = Image.open(FILES / name).tobytes() == Image.open(made[0]).tobytes()
        expect(same, f"{what}: other samples")
finish(f"{len(RUNS)} runs")
