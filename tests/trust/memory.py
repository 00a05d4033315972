#!/usr/bin/python3
"""Peak memory of the program over every file of the corpus, in every format, with two jobs, and over
files of some kilobytes that announce gigabytes.

memory.py [CORPUS]     the folder of real TIFF files beside the checkout when none is named
"""

import os
import struct
import sys
import zlib
from pathlib import Path

sys.dont_write_bytecode = True

from trustlib import CONVERSIONS, PROGRAM, Problems, skip, workspace

sys.path.insert(0, str(Path(os.environ["PAGESTACK_SOURCE_DIR"]) / "bench"))
from measure import Launcher  # noqa: E402

MOST_MB = 300


def bomb(data, width, height, compression, strips=1):
    """A page of 8 bits or, for fax, of 1 bit, whose strips are all the same bytes."""
    rows = height // strips
    tags = {256: width, 257: height, 258: 1 if compression == 4 else 8, 259: compression, 262: 1, 278: rows}
    at = 8 + 2 + 12 * (len(tags) + 2) + 4
    lists = [struct.pack("<I", at + 8 * strips) * strips, struct.pack("<I", len(data)) * strips]
    places = [struct.unpack("<I", each)[0] for each in lists] if strips == 1 else [at, at + 4 * strips]
    entries = sorted([(tag, 1, value) for tag, value in tags.items()]
                     + [(273, strips, places[0]), (279, strips, places[1])])
    return (b"II*\0" + struct.pack("<IH", 8, len(entries))
            + b"".join(struct.pack("<HHII", tag, 4, count, value) for tag, count, value in entries)
            + bytes(4) + b"".join(lists) + data)


def bombs():
    yield "blank fax page", bomb(b"\xff" * 15000, 100000, 100000, 4)
    yield "fax strips that share their bytes", bomb(b"\xff" * 15000, 100000, 100000, 4, strips=100)
    grain = zlib.compress(bytes(32_000_000), 9)
    yield "deflate strips that share their bytes", bomb(grain, 32000, 1000 * 1000, 8, strips=1000)
    yield "rows of a gigapixel", bomb(b"\xff" * 100, 1 << 30, 1, 4)


def main():
    beside = Path(os.environ["PAGESTACK_SOURCE_DIR"]).parent / "shared" / "corpus"
    corpus = Path(sys.argv[1] if sys.argv[1:] else os.environ.get("PAGESTACK_CORPUS", beside))
    sources = sorted(path for path in corpus.rglob("*") if path.suffix.lower() in (".tif", ".tiff"))
    if not sources:
        skip(f"there is no corpus at {corpus}")
    launcher = Launcher()
    problems = Problems()
    folder = workspace()
    peaks = []
    for source in sources:
        for name, options in CONVERSIONS.items():
            outcome = launcher.run([PROGRAM, *options, "--jobs", "2", "--no-log", "-q", "--on-exists", "overwrite",
                                    "-o", folder / "out", source], timeout_s=120)
            what = f"{source.relative_to(corpus)} to {name}"
            problems.expect(outcome.exit_code in (0, 1) and not outcome.timed_out, f"{what}: {vars(outcome)}")
            peaks.append((outcome.peak_bytes / 1e6, what))
            problems.expect(peaks[-1][0] < MOST_MB, f"{what}: {peaks[-1][0]:.0f} MB")
    for name, content in bombs():
        source = folder / "bomb.tif"
        source.write_bytes(content)
        for conversion, options in CONVERSIONS.items():
            outcome = launcher.run([PROGRAM, *options, "--no-log", "-q", "-o", folder / "bombs", source], timeout_s=60)
            what = f"{name} to {conversion}"
            problems.expect(outcome.exit_code == 1, f"{what}: {vars(outcome)}")
            problems.expect(not list((folder / "bombs").iterdir()), f"{what}: it was written")
            peaks.append((outcome.peak_bytes / 1e6, what))
            problems.expect(peaks[-1][0] < MOST_MB, f"{what}: {peaks[-1][0]:.0f} MB")
    launcher.close()
    print("\n".join(f"{peak:.0f} MB: {what}" for peak, what in sorted(peaks)[-5:]))
    problems.finish(f"{len(sources)} files, {len(peaks)} runs, peak {max(peaks)[0]:.0f} MB")


if __name__ == "__main__":
    main()
