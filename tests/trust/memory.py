#!/usr/bin/python3
"""Peak memory of the program over every file of the corpus, in every format, with two jobs.

memory.py [CORPUS]     the folder of real TIFF files beside the checkout when none is named
"""

import os
import sys
from pathlib import Path

sys.dont_write_bytecode = True

from trustlib import CONVERSIONS, PROGRAM, Problems, skip, workspace

sys.path.insert(0, str(Path(os.environ["PAGESTACK_SOURCE_DIR"]) / "bench"))
from measure import Launcher  # noqa: E402

MOST_MB = 300


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
    launcher.close()
    print("\n".join(f"{peak:.0f} MB: {what}" for peak, what in sorted(peaks)[-5:]))
    problems.finish(f"{len(sources)} files, {len(peaks)} runs, peak {max(peaks)[0]:.0f} MB")


if __name__ == "__main__":
    main()
