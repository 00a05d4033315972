#!/usr/bin/python3
"""Measures the peak memory of pagestack-convert on one very large page and on very many pages.

    bench/memory.py --bin build/release/bin/pagestack-convert [--side 20000] [--pages 1000]

Ends with 1 when a bound is passed. Needs about 2 GB of temporary room (RAM disk when it is there) and
libtiff's tiffcp.
"""
import argparse
import os
import shutil
import struct
import subprocess
import sys
import tempfile
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE))

from measure import Launcher, scratch_parent  # noqa: E402

LAUNCHER = Launcher()

import numpy as np  # noqa: E402

LARGE_PAGE_MB, MANY_PAGES_MB = 100, 60
BAND = 500
SHORT, LONG, RATIO = 3, 4, 5


def write_plain_tiff(path, width, height, bits, pages, orientation=1):
    """An uncompressed little-endian TIFF, written band by band; `pages` yields iterables of arrays of
    rows, BAND rows each but the last."""
    row_bytes = (width * bits + 7) // 8
    with open(path, "wb") as file:
        file.write(b"II*\0" + bytes(4))
        link = 4
        for bands in pages:
            offsets, counts = [], []
            for band in bands:
                offsets.append(file.tell())
                counts.append(band.nbytes)
                file.write(band.tobytes())
            assert sum(counts) == row_bytes * height
            file.write(bytes(file.tell() % 2))
            link = _write_directory(file, link, width, height, bits, orientation, offsets, counts)


def _write_directory(file, link, width, height, bits, orientation, offsets, counts):
    """Appends a directory, lets the number at `link` point to it, returns its own link's place."""
    extra = file.tell()
    file.write(struct.pack("<II", 300, 1))
    lists = []
    for values in (offsets, counts):
        lists.append(values[0] if len(values) == 1 else file.tell())
        if len(values) > 1:
            file.write(struct.pack(f"<{len(values)}I", *values))
    entries = [(256, LONG, 1, width), (257, LONG, 1, height), (258, SHORT, 1, bits), (259, SHORT, 1, 1),
               (262, SHORT, 1, 0 if bits == 1 else 1), (273, LONG, len(offsets), lists[0]),
               (274, SHORT, 1, orientation), (277, SHORT, 1, 1), (278, LONG, 1, BAND),
               (279, LONG, len(counts), lists[1]), (282, RATIO, 1, extra), (283, RATIO, 1, extra),
               (296, SHORT, 1, 2)]
    start = file.tell()
    file.write(struct.pack("<H", len(entries)))
    for tag, kind, count, value in entries:
        file.write(struct.pack("<HHII", tag, kind, count, value))
    own_link = file.tell()
    file.write(bytes(4))
    file.seek(link)
    file.write(struct.pack("<I", start))
    file.seek(0, os.SEEK_END)
    return own_link


def gray_bands(side):
    """A slanted ramp with a little noise: compresses to about half."""
    rng = np.random.default_rng(1)
    across = np.arange(side, dtype=np.uint32)
    for top in range(0, side, BAND):
        rows = np.arange(top, min(top + BAND, side), dtype=np.uint32)[:, None]
        noise = rng.integers(0, 4, (len(rows), side), np.uint8)
        yield ((rows * 3 + across * 2) // 400 % 250).astype(np.uint8) + noise


def fax_bands(number):
    """An A4 page of blocks in lines, another one for every number."""
    rng = np.random.default_rng(number)
    width, height = 2480, 3508
    for top in range(0, height, BAND):
        rows = min(BAND, height - top)
        words = np.repeat(rng.random((rows // 50 + 1, width // 20)) < 0.35, 20, axis=1)
        ink = np.repeat(words, 50, axis=0)[:rows] & (np.arange(rows) % 50 < 26)[:, None]
        yield np.packbits(ink, axis=1)


def tiffcp(*words):
    # -m 0: no limit of memory; the layouts with large pieces need it.
    subprocess.run(["tiffcp", "-m", "0", *map(str, words)], check=True, stderr=subprocess.DEVNULL)


def make_sources(folder, side, pages):
    """Yields (name, path, outputs, bound in MB); a source goes when the next one is asked for."""
    plain = folder / "plain.tif"
    layouts = {
        "strips": (1, ["-s", "-r", "16"]),
        "tiles": (1, ["-t", "-w", "256", "-l", "256"]),
        "one strip": (1, ["-s", "-r", str(side)]),
        "orientation 6": (6, ["-s", "-r", "16"]),
    }
    for name, (orientation, layout) in layouts.items():
        write_plain_tiff(plain, side, side, 8, [gray_bands(side)], orientation)
        path = folder / "large.tif"
        tiffcp("-c", "lzw", *layout, plain, path)
        plain.unlink()
        yield (f"{side} x {side} gray LZW, {name}", path,
               ["jpeg", "png", "tiff none", "tiff lzw", "bmp"], LARGE_PAGE_MB)
        path.unlink()
    distinct = min(20, pages)
    write_plain_tiff(plain, 2480, 3508, 1, (fax_bands(number) for number in range(distinct)))
    path = folder / "many.tif"
    tiffcp("-c", "g4", *[plain] * (pages // distinct), path)
    plain.unlink()
    yield f"{pages // distinct * distinct} pages G4", path, ["tiff g4", "tiff none"], MANY_PAGES_MB
    path.unlink()


def convert(program, source, output, folder):
    """The outcome of one conversion and the bytes that it wrote."""
    kind, _, compression = output.partition(" ")
    out = folder / "out"
    out.mkdir()
    options = ["-f", kind, *(["--compression", compression] if compression else [])]
    outcome = LAUNCHER.run([program, *options, "-o", out, "--on-exists", "overwrite", "--no-log", "-q",
                            source], timeout_s=900, stderr=folder / "errors")
    written = sum(path.stat().st_size for path in out.iterdir())
    shutil.rmtree(out)
    return outcome, written


def main(words):
    parser = argparse.ArgumentParser(description="Measures the peak memory of pagestack-convert.")
    parser.add_argument("--bin", default=str(HERE.parent / "build/release/bin/pagestack-convert"))
    parser.add_argument("--side", type=int, default=20000, help="pixels a side of the large page")
    parser.add_argument("--pages", type=int, default=1000, help="pages of the long file")
    arguments = parser.parse_args(words)
    if not os.access(arguments.bin, os.X_OK) or not shutil.which("tiffcp"):
        parser.error(f"{arguments.bin} and tiffcp (Debian: libtiff-tools) are wanted")
    passed = True
    print("| source | output | peak MB | bound MB | | wall s | output MB |")
    print("| --- | --- | ---: | ---: | --- | ---: | ---: |")
    with tempfile.TemporaryDirectory(prefix="memory-", dir=scratch_parent(4 << 30)) as scratch:
        folder = Path(scratch)
        for name, source, outputs, bound in make_sources(folder, arguments.side, arguments.pages):
            for output in outputs:
                outcome, written = convert(arguments.bin, source, output, folder)
                peak = outcome.peak_bytes / 1e6
                state = "ok" if peak <= bound else "over"
                if not outcome.succeeded:
                    reason = "time" if outcome.timed_out else f"exit {outcome.exit_code}"
                    state = f"failed ({reason})"
                passed = passed and state == "ok"
                print(f"| {name} | {output} | {peak:.0f} | {bound} | {state} | {outcome.wall_s:.1f} "
                      f"| {written / 1e6:.0f} |", flush=True)
    return 0 if passed else 1


if __name__ == "__main__":
    try:
        sys.exit(main(sys.argv[1:]))
    finally:
        LAUNCHER.close()
