#!/usr/bin/env python3
"""Makes the system's calls fail under the command line: faults.py SHIM [--all] [--seed N]

SHIM is the library of faultshim.c. What a fault hits is reported by name and reason and stays as it
was, the rest of the run is written, and what can be survived is.
"""

import argparse
import errno
import os
import random
import re
import shutil
from collections import Counter
from pathlib import Path

from trust import CONVERSIONS, Ground, digests, expect, finish, is_kept_together, logs, read_log, run

CALLS = ("open", "write", "close", "rename", "fsync", "ftruncate")
REASONS = (errno.ENOSPC, errno.EIO, errno.EDQUOT)
SHORT = 0
PAGES = 3
ground, counts = Ground(PAGES, 61), Counter()


class Fault:
    def __init__(self, call, error, first=1, once=True):
        self.call, self.error, self.first, self.once = call, error, first, once
        self.is_survived = error in (errno.EINTR, SHORT)

    def __str__(self):
        error = errno.errorcode.get(self.error, "half")
        return f"{self.call} {error} {'at' if self.once else 'from'} {self.first}"

    def run(self, shim, below, words, is_sealed=False):
        """The ended run, and how many of its calls failed."""
        count = ground.folder / "count"
        count.write_bytes(b"")
        wanted = {"CALL": self.call, "ERROR": self.error, "FROM": self.first, "BELOW": below, "COUNT": count,
                  **({"ONCE": 1} if self.once else {}), **({"SEALED": 1} if is_sealed else {})}
        done = run(words, ground.home,
                   env={"LD_PRELOAD": shim, **{f"PAGESTACK_FAULT_{key}": str(value) for key, value in wanted.items()}})
        counts[self.call] += count.stat().st_size
        return done, count.stat().st_size


def check(shim, fault, name, jobs, in_place=False, **how):
    words, old = ground.prepare(name, **how)
    done, hits = fault.run(shim, ground.output, [*words, "--jobs", jobs], in_place)
    what = f"{name} {how}{' in place' * in_place}, jobs {jobs}, {fault}, {hits} hits"
    written, left, errors = ground.written[name], digests(ground.output), done.stderr
    failed = {path for path in written if left.get(path) != written[path]}
    expect(all(left.get(path) == old.get(path) for path in failed), f"{what}: {failed} not as they were")
    expect(set(left) <= set(written) | set(old), f"{what}: left {sorted(set(left) - set(written))}")
    ground.check_sources(what)
    expect(not how.get("is_own") or set(old) <= set(left), f"{what}: a source is lost")
    expect(done.returncode == bool(failed), f"{what}: code {done.returncode}, failed {failed}: {errors}")
    if hits == 0 or fault.is_survived:
        expect(not failed and not errors, f"{what}: {failed} failed: {errors}")
    else:
        expect(len(failed) == (1 if fault.once else len(written)), f"{what}: failed {failed}")
    if fault.is_survived:
        return
    # What failed is on standard error and in the log.
    together = is_kept_together(name)
    failures = {re.fullmatch(r"([a-z]+)([0-9]*)\.[a-z]+", path).groups() for path in failed}
    for stem, page in failures:
        told = [line for line in errors.splitlines() if f"/{stem}." in line and (together or f"[{page}]: " in line)]
        expect(len(told) == 1 and os.strerror(fault.error) in told[0], f"{what}: {stem} {page} is told in {errors}")
    sources = [source for log in logs(ground.home) for source in read_log(log)]
    expect(len(sources) == len(ground.sources), f"{what}: the log is not whole")
    for source, records in sources:
        states = {page["SourcePageNo"]: page["Status"] for page in records}
        bad = {page for stem, page in failures if stem == Path(source["FileName"]).stem and not together}
        wanted = {str(page): "Unable to save page!" if str(page) in bad else "Completed"
                  for page in range(1, PAGES + 1)}
        expect(states == wanted, f"{what}: the log says {states} of {source['FileName']}, failed {sorted(failures)}")


def check_log(shim, fault, is_asked_for):
    """A log that cannot be written is told; the pages are written all the same, unless it shows before."""
    words, _ = ground.prepare("jpg")
    places = ground.folder / "logs"
    shutil.rmtree(places, ignore_errors=True)
    places.mkdir()
    below, log = places if is_asked_for else ground.home / "data", places / "run.xml"
    log.write_text("what was there")
    done, hits = fault.run(shim, below, [*words, "--log", log])
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
        code = 4 if is_refused else int(is_asked_for)
        expect(done.returncode == code, f"{what}: exit code {done.returncode}")


def places(call):
    """Formats, and where their outputs go."""
    for name in CONVERSIONS:
        if call != "ftruncate":
            # Only what is replaced has to be on the disk before.
            yield from [(name, {})] if call != "fsync" else []
            yield name, {"has_old": True}
        if name in ("jpg", "tiff") and call not in ("open", "rename"):
            yield name, {"has_old": True, "in_place": True}
        if name in ("tiff", "tiff-g4"):
            yield from [(name, {"is_own": True})] if call != "ftruncate" else []
            yield from [(name, {"is_own": True, "in_place": True})] if call not in ("open", "rename") else []


def faults(rng, call, reasons, in_place):
    """Faults of one call: from the first on, once somewhere, and those that are to be survived."""
    for error in reasons:
        if not in_place:  # a file that is written in place could not be put back either
            yield Fault(call, error, once=False)
        # Each file has two closes: the first is looked at, the second comes when it is in place.
        yield Fault(call, error, first=1 + 2 * rng.randrange(2))
    yield Fault(call, errno.EINTR, first=rng.randint(1, 4), once=call != "close")
    if call == "write":
        yield Fault(call, SHORT, once=False)
        yield Fault(call, SHORT, first=rng.randint(1, 4))


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("shim", type=Path)
    parser.add_argument("--all", action="store_true", help="each call with each reason in each format")
    parser.add_argument("--seed", type=int, default=random.randrange(1 << 30))
    options = parser.parse_args()
    shim, rng = str(options.shim.resolve()), random.Random(options.seed)
    print(f"seed {options.seed}")
    for call in CALLS:
        for name, place in places(call):
            for fault in faults(rng, call, REASONS if options.all else [rng.choice(REASONS)], "in_place" in place):
                # Of several at work, one that failed is done again by another: once is survived.
                jobs = rng.choice("14") if fault.is_survived or not fault.once else "1"
                check(shim, fault, name, jobs, **place)
        for is_asked_for in (False, True) if call != "ftruncate" else ():
            for error in (*REASONS, errno.EINTR):
                if call != "fsync" or is_asked_for:  # a new log replaces nothing, and so is not waited for
                    check_log(shim, Fault(call, error, once=error == errno.EINTR), is_asked_for)
        expect(counts[call], f"no {call} was ever made to fail")
    finish(f"{counts.total()} faults injected: {dict(counts)}")


if __name__ == "__main__":
    main()
