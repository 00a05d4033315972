#!/usr/bin/python3
"""Long runs: memory and open files stay what they were after the first thousand pages.

long_run.py [--count N]     N sources of a page, then one source of N pages
"""
import argparse
import os
import threading
import time
from pathlib import Path

from trust import expect, finish, logs, picture, read_log, staged_files, start, workspace, write_tiff

GROWTH_MB = 10
MOST_OPEN = 80  # two dozen pages are prepared ahead, each with a source and an output
STEP = 1000


def check(name, words, count, folder, has_begun):
    """Runs the program, which tells of each output that it has written, and looks at it on the way."""
    process = start(["-v", "--jobs", "2", *words, "-o", folder / "out", folder / "in"], folder / "home")
    proc, lines, early_kb, peak_kb, most_open = Path(f"/proc/{process.pid}"), [], 0, 0, 0
    reader = threading.Thread(target=lambda: [lines.append(line) for line in process.stdout])
    reader.start()
    while process.poll() is None:
        try:
            peak_kb = int((proc / "status").read_text().split("VmHWM:")[1].split()[0])
            most_open = max(most_open, len(os.listdir(proc / "fd")))
            early_kb = early_kb or (peak_kb if has_begun(folder / "out", lines) else 0)
        except (OSError, IndexError):
            pass  # it ends, or a file is in place
        time.sleep(0.005)
    reader.join()
    errors, growth = process.stderr.read(), (peak_kb - early_kb) / 1024
    expect(process.returncode == 0 and not errors, f"{name}: exit code {process.returncode}, {errors}")
    pages = sum(len(pages) for _, pages in read_log(logs(folder / "home")[0]))
    expect(pages == count, f"{name}: {pages} of {count} pages in the log")
    written = sum("/out/" in line for line in lines)
    expect(written == (1 if has_begun is has_bytes else count), f"{name}: {written} files written")
    expect(early_kb and growth <= GROWTH_MB, f"{name}: {growth:.1f} MB more than at first")
    expect(most_open <= MOST_OPEN, f"{name}: {most_open} files open")
    print(f"{name}: peak {peak_kb / 1024:.1f} MB, at most {most_open} open files", flush=True)


def has_written(_, lines):
    return len(lines) >= STEP


def has_bytes(output, _):
    """Pages that are kept together are announced at their end."""
    return output.is_dir() and any(path.stat().st_size for path in staged_files(output))


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--count", type=int, default=50000)
    count = parser.parse_args().count
    for name, words in (("png", "-f png"), ("tiff together", "-f tiff"), ("tiff split", "-f tiff --split")):
        for sources in (count, 1):
            folder = workspace()
            (folder / "in").mkdir()
            for number in range(sources):
                write_tiff(folder / "in" / f"{number}.tif",
                           [picture(i, 64, 64, bits=1) for i in range(count // sources)])
            is_together = sources == 1 and name == "tiff together"
            check(f"{sources} sources to {name}", words.split(), count, folder,
                  has_bytes if is_together else has_written)
    finish("long runs")


if __name__ == "__main__":
    main()
