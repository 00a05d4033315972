#!/usr/bin/python3
"""Long runs: memory and open files stay what they were after the first thousand pages, time is linear.

long_run.py [--count N]     N sources of a page, then one source of N pages
"""

import argparse
import os
import struct
import sys
import threading
import time
from pathlib import Path

sys.dont_write_bytecode = True

from trustlib import Problems, logs, read_log, start, workspace

GROWTH_MB = 10
MOST_OPEN = 80  # two dozen pages are prepared ahead, each with a source and an output
STEP = 1000
SIDE = 64
TICKS = os.sysconf("SC_CLK_TCK")


def tiff_of(pages):
    """An uncompressed TIFF file of black and white pages, each with pixels of its own."""
    row, strip = SIDE // 8, SIDE * SIDE // 8
    size = strip + 2 + 8 * 12 + 4
    file = bytearray(b"II*\0" + struct.pack("<I", 8 + strip))
    for page in range(pages):
        at = len(file)
        file += (page * 2654435761 % 2**32).to_bytes(4, "little") * (row // 4) + bytes(strip - row)
        entries = ((256, SIDE), (257, SIDE), (258, 1), (259, 1), (262, 1), (273, at), (278, SIDE), (279, strip))
        file += struct.pack("<H", len(entries))
        for tag, value in entries:
            file += struct.pack("<HHII", tag, 4, 1, value)
        file += struct.pack("<I", at + size + strip if page + 1 < pages else 0)
    return bytes(file)


class Watch:
    """What a process takes, looked up whenever a thousand outputs are written and at its end."""

    def __init__(self, process, output):
        self.proc = Path(f"/proc/{process.pid}")
        self.output = output
        self.peak_kb = 0
        self.early_kb = None  # when the first quarter of a megabyte of an output is written
        self.steps = []  # of (peak in kB, open files, seconds of processor time)
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
        used = (self.proc / "stat").read_text().rpartition(")")[2].split()
        self.steps.append((self.peak_kb, len(os.listdir(self.proc / "fd")), sum(map(int, used[11:13])) / TICKS))


def check(problems, name, arguments, count, folder):
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
    problems.expect(process.wait() == 0 and not errors, f"{name}: exit code {process.returncode}, {errors}")
    problems.expect(done == count, f"{name}: {done} of {count} pages written")
    pages = sum(len(pages) for _, pages in read_log(logs(home)[0]) or [])
    problems.expect(pages == count, f"{name}: {pages} of {count} pages in the log")
    growth = (watch.peak_kb - watch.steps[0][0]) / 1024
    problems.expect(growth <= GROWTH_MB, f"{name}: {growth:.1f} MB more than after the first {STEP}")
    most = [max(step[1] for step in steps) for steps in (watch.steps[:10], watch.steps)]
    problems.expect(most[1] <= MOST_OPEN, f"{name}: {most[0]} files open at first, {most[1]} later")
    times = [after[2] - before[2] for before, after in zip(watch.steps, watch.steps[1:])]
    usual = sorted(times)[len(times) // 2]
    # Of a few steps a busy machine would tell, not the program.
    problems.expect(len(times) < 20 or times[-1] <= 2 * usual + 0.1, f"{name}: {usual:.2f} s for {STEP} as a rule, {times[-1]:.2f} s at last")
    print(f"{name}: {count} pages, peak {watch.peak_kb / 1024:.1f} MB, {growth:.1f} MB more than after the first "
          f"{STEP}; at most {most[0]} open files in the first ten "
          f"thousand, {most[1]} in all; processor time for {STEP}: first {times[0]:.2f} s, "
          f"median {usual:.2f} s, last {times[-1]:.2f} s", flush=True)


def check_together(problems, count, folder):
    """One source of very many pages, kept together: the output is announced once, at its end."""
    process = start(["-f", "tiff", "--jobs", "2", "-o", folder / "out", folder / "in"], folder / "home")
    watch = Watch(process, folder / "out")
    errors = process.communicate()[1]
    problems.expect(process.returncode == 0 and not errors, f"pages together: {process.returncode}, {errors}")
    growth = (watch.peak_kb - (watch.early_kb or 0)) / 1024
    problems.expect(growth <= GROWTH_MB, f"pages together: {growth:.1f} MB more than at its first pages")
    print(f"pages to tiff together: {count} pages, peak {watch.peak_kb / 1024:.1f} MB, {growth:.1f} MB more than "
          f"at its first pages", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--count", type=int, default=50000)
    count = parser.parse_args().count
    problems = Problems()
    cases = {"png": ["-f", "png"], "tiff together": ["-f", "tiff"], "tiff split": ["-f", "tiff", "--split"]}
    for name, arguments in cases.items():
        for shape in ("sources", "pages"):
            folder = workspace()
            (folder / "in").mkdir()
            for number in range(count if shape == "sources" else 1):
                (folder / "in" / f"{number}.tif").write_bytes(tiff_of(1 if shape == "sources" else count))
            if (shape, name) == ("pages", "tiff together"):
                check_together(problems, count, folder)
                continue
            check(problems, f"{shape} to {name}", [*arguments, "-o", folder / "out", folder / "in"], count, folder)
    problems.finish("long runs")


if __name__ == "__main__":
    main()
