#!/usr/bin/python3
"""Long runs: memory and open files stay what they were after the first thousand pages.

long_run.py [--count N]     N sources of a page, then one source of N pages
"""

import argparse
import os
import threading
import time
from pathlib import Path

from trust import expect, finish, logs, picture, read_log, start, workspace, write_tiff

GROWTH_MB = 10
MOST_OPEN = 80  # two dozen pages are prepared ahead, each with a source and an output
STEP = 1000
SIDE = 64


class Watch:
    """What a process takes, looked up whenever a thousand outputs are written and at its end."""

    def __init__(self, process, output):
        self.proc = Path(f"/proc/{process.pid}")
        self.output = output
        self.peak_kb = 0
        self.early_kb = None  # when the first quarter of a megabyte of an output is written
        self.steps = []  # of (peak in kB, open files)
        threading.Thread(target=self.follow, daemon=True).start()

    def look_up_peak(self):
        for line in (self.proc / "status").read_text().splitlines():
            if line.startswith("VmHWM"):
                self.peak_kb = max(self.peak_kb, int(line.split()[1]))

    def follow(self):
        try:
            while True:
                self.look_up_peak()
                if not self.early_kb and any(self.size_of(path) for path in self.output.glob(".pagestack-*")):
                    self.early_kb = self.peak_kb
                time.sleep(0.005)
        except (OSError, ValueError):
            pass  # it has ended

    @staticmethod
    def size_of(path):
        try:
            return path.stat().st_size
        except FileNotFoundError:
            return 0  # it is in place

    def note(self):
        self.look_up_peak()
        self.steps.append((self.peak_kb, len(os.listdir(self.proc / "fd"))))


def check(name, arguments, count, folder):
    """Runs the program, which tells of each page that it has written, and looks at it on the way."""
    home = folder / "home"
    process = start(["-v", "--jobs", "2", *arguments], home)
    watch = Watch(process, folder / "out")
    done = 0
    for line in process.stdout:
        done += "/out/" in line
        if "/out/" in line and done % STEP == 0 and done < count:
            watch.note()
    errors = process.stderr.read()
    expect(process.wait() == 0 and not errors, f"{name}: exit code {process.returncode}, {errors}")
    expect(done == count, f"{name}: {done} of {count} pages written")
    pages = sum(len(pages) for _, pages in read_log(logs(home)[0]) or [])
    expect(pages == count, f"{name}: {pages} of {count} pages in the log")
    growth = (watch.peak_kb - watch.steps[0][0]) / 1024
    expect(growth <= GROWTH_MB, f"{name}: {growth:.1f} MB more than after the first {STEP}")
    most = max(step[1] for step in watch.steps)
    expect(most <= MOST_OPEN, f"{name}: {most} files open")
    print(f"{name}: {count} pages, peak {watch.peak_kb / 1024:.1f} MB, {growth:.1f} MB more than after the first "
          f"{STEP}; at most {most} open files", flush=True)


def check_together(count, folder):
    """One source of very many pages, kept together: the output is announced once, at its end."""
    process = start(["-f", "tiff", "--jobs", "2", "-o", folder / "out", folder / "in"], folder / "home")
    watch = Watch(process, folder / "out")
    errors = process.communicate()[1]
    expect(process.returncode == 0 and not errors, f"pages together: {process.returncode}, {errors}")
    growth = (watch.peak_kb - (watch.early_kb or 0)) / 1024
    expect(growth <= GROWTH_MB, f"pages together: {growth:.1f} MB more than at its first pages")
    print(f"pages to tiff together: {count} pages, peak {watch.peak_kb / 1024:.1f} MB, {growth:.1f} MB more than "
          f"at its first pages", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--count", type=int, default=50000)
    count = parser.parse_args().count
    cases = {"png": ["-f", "png"], "tiff together": ["-f", "tiff"], "tiff split": ["-f", "tiff", "--split"]}
    for name, arguments in cases.items():
        for shape in ("sources", "pages"):
            folder = workspace()
            (folder / "in").mkdir()
            for number in range(count if shape == "sources" else 1):
                write_tiff(folder / "in" / f"{number}.tif",
                           [picture(i, SIDE, SIDE, bits=1) for i in range(1 if shape == "sources" else count)])
            if (shape, name) == ("pages", "tiff together"):
                check_together(count, folder)
                continue
            check(f"{shape} to {name}", [*arguments, "-o", folder / "out", folder / "in"], count, folder)
    finish("long runs")


if __name__ == "__main__":
    main()
