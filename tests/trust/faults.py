#!/usr/bin/env python3
"""Makes the system's calls fail under the command line: faults.py SHIM

SHIM is the library of faultshim.c. What a fault hits is reported by name and reason and stays as it
was, the rest of the run is written, and what can be survived is.
"""

import errno
import os
import random
import re
import shutil
import sys
from collections import Counter
from pathlib import Path

from trust import CONVERSIONS, Ground, digests, expect, finish, is_kept_together, logs, read_log, run, troubles

CALLS = ("open", "write", "close", "rename", "fsync", "ftruncate")
REASONS = (errno.ENOSPC, errno.EIO, errno.EDQUOT)
TRY_AGAIN = 75  # the exit code for these: they may be gone the next time
SHORT, TURNED = 0, -1
PAGES = 3
ground, counts, rng = Ground(PAGES, 61), Counter(), random.Random()


class Fault:
    def __init__(self, call, error, first=1, once=True):
        self.call, self.error, self.first, self.once = call, error, first, once
        self.is_survived = error in (errno.EINTR, SHORT)

    def __str__(self):
        error = {SHORT: "half", TURNED: "a bit"}.get(self.error) or errno.errorcode[self.error]
        return f"{self.call} {error} {'at' if self.once else 'from'} {self.first}"

    def run(self, below, words, is_sealed=False):
        """The ended run, and how many of its calls failed."""
        count = ground.folder / "count"
        count.write_bytes(b"")
        wanted = {"CALL": self.call, "ERROR": self.error, "FROM": self.first, "BELOW": below, "COUNT": count,
                  "ONCE": self.once, "SEALED": is_sealed}
        done = run(words, ground.home, env={"LD_PRELOAD": os.path.abspath(sys.argv[1]), **{
            f"PAGESTACK_FAULT_{key}": str(value) for key, value in wanted.items() if value is not False}})
        counts[self.call] += count.stat().st_size
        return done, count.stat().st_size


def check(fault, name, in_place=False, **how):
    # Of several at work, one that failed is done again by another: once is survived.
    jobs = rng.choice("14") if fault.is_survived or not fault.once else "1"
    words, old = ground.prepare(name, **how)
    done, hits = fault.run(ground.output, [*words, "--jobs", jobs], in_place)
    what = f"{name} {how}{' in place' * in_place}, jobs {jobs}, {fault}, {hits} hits: {done.stderr}"
    written, left = ground.written[name], digests(ground.output)
    failed = {path for path in written if left.get(path) != written[path]}
    expect(all(left.get(path) == old.get(path) for path in failed), f"{what}: {failed} not as they were")
    expect(set(left) <= set(written) | set(old), f"{what}: left {sorted(set(left) - set(written))}")
    expect(not how.get("is_own") or set(old) <= set(left), f"{what}: a source is lost")
    ground.check_sources(what)
    survives = hits == 0 or fault.is_survived
    wanted = 0 if survives else 1 if fault.once else len(written)
    expect(done.returncode == TRY_AGAIN * bool(failed) and len(failed) == wanted, f"{what}: {done.returncode}, failed {failed}")
    # What failed is on standard error and in the log.
    together = is_kept_together(name)
    failures = {re.fullmatch(r"([a-z]+)([0-9]*)\.[a-z]+", path).groups() for path in failed}
    told = troubles(done)
    for stem, page in failures:
        lines = [line for line in told if f"/{stem}." in line and (together or f"[{page}]: " in line)]
        expect(len(lines) == 1 and os.strerror(fault.error) in lines[0], f"{what}: {stem} {page} is not told")
    expect(len(told) == len(failures), f"{what}: more is told than that")
    states = {(Path(source["FileName"]).stem, page["SourcePageNo"]): page["Status"]
              for log in logs(ground.home) for source, pages in read_log(log) for page in pages}
    wanted = {(source.stem, str(page)): "Completed" for source in ground.sources for page in range(1, PAGES + 1)}
    wanted.update(dict.fromkeys(() if together else failures, "Unable to save page!"))
    expect(states == wanted, f"{what}: the log says {states}")


def check_verified(name, once):
    """A bit that was turned over on its way to the disk shows when the file is read back, and only then."""
    for option in ([], ["--verify"]):
        words, _ = ground.prepare(name)
        fault = Fault("write", TURNED, once=once)
        done, hits = fault.run(ground.output, [*words, *option, "--jobs", "1" if once else rng.choice("14")])
        what = f"{name} {option}, {fault}, {hits} hits: {done.stderr}"
        written, left = ground.written[name], digests(ground.output)
        wrong = {path for path in written if left.get(path) != written[path]}
        expect(hits and len(wrong) == (1 if once else len(written)), f"{what}: {wrong} are other files")
        expect(done.returncode == bool(option) and len(troubles(done)) == len(option) * len(wrong), what)
        expect(not option or (not wrong & set(left) and done.stderr.count("read back") == len(wrong)), what)


def check_log(fault, is_asked_for):
    """A log that cannot be written is told; the pages are written all the same, unless it shows before."""
    words, _ = ground.prepare("jpg")
    places = ground.folder / "logs"
    shutil.rmtree(places, ignore_errors=True)
    places.mkdir()
    below, log = places if is_asked_for else ground.home / "data", places / "run.xml"
    log.write_text("what was there")
    done, hits = fault.run(below, [*words, "--log", log])
    what, errors = f"log{' asked for' * is_asked_for}, {fault}, {hits} hits", done.stderr
    is_refused = is_asked_for and fault.call == "open" and not fault.is_survived
    expect(digests(ground.output) == ({} if is_refused else ground.written["jpg"]), f"{what}: a page is missing")
    is_kept = log.is_file() and log.read_text() == "what was there"
    found = logs(ground.home) if not is_asked_for else [] if is_kept else [log]
    others = [path for folder in (places, ground.home / "data") for path in folder.rglob("*")
              if path.is_file() and path != log and path.suffix != ".log"]
    expect(not others, f"{what}: left {others}")
    expect(all(len(read_log(path)) == len(ground.sources) for path in found), f"{what}: {found} is not whole")
    expect(hits, f"{what}: it never came to that")
    if fault.is_survived:
        expect(found and not errors and done.returncode == 0, f"{what}: {found}: {errors}")
    else:
        place = str(log if is_asked_for else below)
        expect(not found and "log" in errors and place in errors, f"{what}: {found}: {errors}")
        code = 4 if is_refused else TRY_AGAIN * is_asked_for
        expect(done.returncode == code, f"{what}: exit code {done.returncode}")


def places():
    """Formats, and where their outputs go; not every call is made for each."""
    for name in CONVERSIONS:
        yield name, {}
        yield name, {"has_old": True}
        if name in ("jpg", "tiff"):
            yield name, {"has_old": True, "in_place": True}
        if name in ("tiff", "tiff-g4"):
            yield from ((name, {"is_own": True, "in_place": in_place}) for in_place in (False, True))


def faults(call, in_place):
    """Faults of one call: from the first on, once somewhere, and those that are to be survived."""
    if not in_place:  # a file that is written in place could not be put back either
        yield Fault(call, rng.choice(REASONS), once=False)
    # Each file has two closes: the first is looked at, the second comes when it is in place.
    yield Fault(call, rng.choice(REASONS), first=1 + 2 * rng.randrange(2))
    yield Fault(call, errno.EINTR, first=rng.randint(1, 4), once=call != "close")
    if call == "write":
        yield Fault(call, SHORT, once=False)
        yield Fault(call, SHORT, first=rng.randint(1, 4))


def main():
    for call in CALLS:
        for name, place in places():
            for fault in faults(call, place.get("in_place", False)):
                check(fault, name, **place)
        for is_asked_for in (False, True) if call != "ftruncate" else ():
            for error in (*REASONS, errno.EINTR):
                if call != "fsync" or is_asked_for:  # a new log replaces nothing, and so is not waited for
                    check_log(Fault(call, error, once=error == errno.EINTR), is_asked_for)
        expect(counts[call], f"no {call} was ever made to fail")
    for name in CONVERSIONS:
        for once in (False, True) if name != "jpg" else ():  # pixels of which are not compared
            check_verified(name, once)
    finish(f"faults injected: {dict(counts)}")


if __name__ == "__main__":
    main()
