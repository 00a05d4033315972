#!/usr/bin/env python3
"""Files that once lost pixels or tags without a word: what is said of them, and what must be right.

They stand beside the checkout in shared/repro; without them the test counts as skipped.
"""
import re
import shutil
import sys
from pathlib import Path

from trust import BESIDE, expect, finish, run, skip, workspace

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "corpus"))
from PIL import Image  # noqa: E402
from tiff_reader import TiffFile, decode_page  # noqa: E402

FILES = BESIDE / "repro"
REFUSED = 1
# File, words, exit code, what standard error says ("" is silence).
RUNS = [
    ("sparse_tile_40.tif", "-f png", 0, r"\[1\]: warning: 1 of its 4 tiles has no data in the file"),
    ("sparse_tile_300.tif", "-f tiff", 0, r"\[1\]: warning: 2 of its 4 tiles have no data in the file"),
    ("sparse_strip_padded.tif", "-f gif", 0, r"\[1\]: warning: 1 of its 4 strips has no data in the file"),
    ("zero_off_valid_count.tif", "-f bmp", REFUSED, r"\[1\]: strip 1 of the page lies in the header"),
    ("rps_wrong.tif", "-f tiff", 0, ""),
    ("planar_wrong.tif", "-f png", REFUSED, r"\[1\]: the table of its strips is too short, 1 of 3"),
    ("deflate_padded_last_strip.tif", "-f tiff", 0, ""),
    ("deflate_good.tif", "-f tiff", 0, ""),
    ("deflate_damaged_1.tif", "-f jpg", REFUSED, r"\[1\]: its Deflate data are damaged"),
    ("jpeg_restart_good.tif", "-f png", 0, ""),
    ("jpeg_lost_last_rst.tif", "-f png", REFUSED, r"\[1\]: .*restart markers"),
    ("jpeg_lost_all_rst.tif", "-f tiff", REFUSED, r"\[1\]: .*restart markers"),
    ("checker_640.tif", "-f tiff --compression g3", 0, ""),
    ("checker_640.tif", "-f tiff --compression g4", 0, ""),
    ("float255.tif", "-f png", 0, r"\[1\]: warning: its samples lie between 0 and 255, and 0 to 1 is shown"),
    ("u32small.tif", "-f png", 0, r"\[1\]: warning: its samples lie between 1000 and 4095,"),
    ("float255.tif", "-f tiff", 0, ""),
    ("subifd.tiff", "-f tiff --split", 0, r": warning: 1 tag left out: SubIFDs"),
    ("geo_exif.tiff", "-f tiff", 0, r": warning: 12 tags left out: .*, \.\.\."),
]
# Over the source itself: it stays as it is.
KEPT = [
    ("subifd.tiff", r": the file is kept as it is, since 1 tag would be lost: SubIFDs"),
    ("geo_exif.tiff", r": the file is kept as it is, since 12 tags would be lost: .*ExifIFD.*GDAL_NODATA"),
]


def same_samples(source, made):
    if source.name == "checker_640.tif":  # fax is left to libtiff
        return Image.open(source).tobytes() == Image.open(made).tobytes()
    samples = decode_page(TiffFile(made), 0).samples
    if source.name == "rps_wrong.tif":  # one uncompressed strip of all rows
        return samples.tobytes() in source.read_bytes()
    return samples.tobytes() == decode_page(TiffFile(source), 0).samples.tobytes()


def main():
    if not FILES.is_dir():
        skip(f"there is no {FILES}")
    folder = workspace()
    for number, (name, words, code, said) in enumerate(RUNS):
        out = folder / str(number)
        ended = run([*words.split(), "-q", "-o", out, FILES / name], folder / "home")
        made = sorted(out.glob("*")) if out.is_dir() else []
        what = f"{name} {words}"
        expect(ended.returncode == code, f"{what}: exit {ended.returncode}")
        expect(bool(made) == (code == 0), f"{what}: {made}")
        lines = ended.stderr.splitlines()
        expect(len(lines) == bool(said) and (not said or re.search(name + said, lines[0])),
                        f"{what}: {lines}")
        if made and not said and made[0].suffix == ".tiff":
            expect(same_samples(FILES / name, made[0]), f"{what}: other samples")
    for name, said in KEPT:
        source = shutil.copyfile(FILES / name, folder / name)
        ended = run(["-f", "tiff", "--on-exists", "overwrite", "-q", source], folder / "home")
        expect(ended.returncode == REFUSED and re.search(name + said, ended.stderr), f"{name}: {ended.stderr}")
        expect(Path(source).read_bytes() == (FILES / name).read_bytes(), f"{name} was replaced")
    finish(f"{len(RUNS) + len(KEPT)} runs")


if __name__ == "__main__":
    main()
