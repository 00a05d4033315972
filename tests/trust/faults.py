#!/usr/bin/env python3
"""Makes the system's calls fail under the command line: faults.py SHIM [--all] [--seed N]

SHIM is the library of faultshim.c. What a fault hits is reported by name and reason and stays as it
was, the rest of the run is written, and what can be survived is. The last part fills a small disk.
"""

import argparse
import errno
import os
import random
import re
import shutil
import subprocess
import sys
from collections import Counter
from pathlib import Path

from trustlib import (CONVERSIONS, Problems, digest, incompleteness, is_kept_together, logs, make_source, read_log,
                      reference, run, workspace)

CALLS = ("open", "write", "close", "rename", "fsync", "ftruncate")
REASONS = (errno.ENOSPC, errno.EIO, errno.EDQUOT)
SHORT = 0
PAGES = 3


class Fault:
    def __init__(self, call, error, first=1, once=True, below=None):
        self.call, self.error, self.first, self.once, self.below = call, error, first, once, below

    def __str__(self):
        error = errno.errorcode.get(self.error, "half")
        return f"{self.call} {error} {'at' if self.once else 'from'} {self.first}"

    def is_survived(self):
        return self.error in (errno.EINTR, SHORT)

    def environment(self, shim, count):
        wanted = {"LD_PRELOAD": shim, "PAGESTACK_FAULT_CALL": self.call, "PAGESTACK_FAULT_ERROR": str(self.error),
                  "PAGESTACK_FAULT_FROM": str(self.first), "PAGESTACK_FAULT_BELOW": str(self.below),
                  "PAGESTACK_FAULT_COUNT": str(count)}
        return {**wanted, **({"PAGESTACK_FAULT_ONCE": "1"} if self.once else {})}


class Ground:
    def __init__(self, shim, size=None):
        self.shim = shim
        self.problems = Problems()
        self.hits = Counter()
        self.folder = workspace()
        self.output, self.home = self.folder / "out", self.folder / "home"
        self.sources = [make_source(self.folder / f"{name}.tif", PAGES, size, i)
                        for i, name in enumerate(("alpha", "beta", "gamma"))]
        self.originals = [digest(path) for path in self.sources]
        self.references = {name: reference(self.problems, arguments, self.sources, PAGES, self.folder / name)
                           for name, arguments in CONVERSIONS.items()}

    def run_with(self, fault, arguments, **environment):
        """The ended run, and how many of its calls failed."""
        count = self.folder / "count"
        count.write_bytes(b"")
        ended = run(arguments, self.home, env={**fault.environment(self.shim, count), **environment})
        hits = count.stat().st_size
        self.hits[fault.call] += hits
        return ended, hits

    def prepare(self, written, is_own, has_old):
        """The sources as they are in front of an output folder that was made anew, and what is in it."""
        for folder in (self.output, self.home):
            shutil.rmtree(folder, ignore_errors=True)
            folder.mkdir()
        for name in written if has_old else ():
            (self.output / name).write_text(f"what was at {name}")
        sources = self.sources
        if is_own:
            sources = [Path(shutil.copy(path, self.output / f"{path.stem}.tiff")) for path in sources]
        return sources, {path.name: digest(path) for path in self.output.iterdir()}

    def check(self, fault, name, jobs, is_own=False, has_old=False, in_place=False):
        written = self.references[name]
        sources, old = self.prepare(written, is_own, has_old)
        fault.below = self.output
        sealed = {"PAGESTACK_FAULT_SEALED": "1"} if in_place else {}
        arguments = [*CONVERSIONS[name], "--on-exists", "overwrite", "--jobs", jobs,
                     *([] if is_own else ["-o", self.output]), *sources]
        ended, hits = self.run_with(fault, arguments, **sealed)
        what = f"{name}{' own' * is_own}{' old' * has_old}{' in place' * in_place}, jobs {jobs}, {fault}"
        expect = self.problems.expect
        left = {path.name: digest(path) for path in self.output.iterdir()}
        failed = {name for name in written if left.get(name) != written[name]}
        expect(all(left.get(name) == old.get(name) for name in failed), f"{what}: {failed} not as they were")
        expect(set(left) <= set(written) | set(old), f"{what}: left {sorted(set(left) - set(written))}")
        expect([digest(path) for path in self.sources] == self.originals, f"{what}: a source changed")
        if is_own:
            expect(set(old) <= set(left), f"{what}: a source is lost")
        if hits == 0 or fault.is_survived():
            expect(not failed and not ended.stderr, f"{what}: {hits} hits: {failed} failed: {ended.stderr}")
        else:
            expect(len(failed) == (1 if fault.once else len(written)), f"{what}: {hits} hits, failed {failed}")
        expect(ended.returncode == bool(failed), f"{what}: code {ended.returncode}, failed {failed}: {ended.stderr}")
        if not fault.is_survived():
            self.check_words(what, fault, CONVERSIONS[name], sources, failed, ended.stderr)

    def check_words(self, what, fault, arguments, sources, failed, errors):
        """What failed is on standard error and in the log."""
        together = is_kept_together(arguments)
        failures = {re.fullmatch(r"([a-z]+)([0-9]*)\.[a-z]+", name).groups() for name in failed}
        for source in sources:
            pages = {page for stem, page in failures if stem == source.stem}
            for page in pages:
                start = f"pagestack-convert: {source}" + (": " if together else f"[{page}]: ")
                told = [line for line in errors.splitlines() if line.startswith(start)]
                self.problems.expect(len(told) == 1 and os.strerror(fault.error) in told[0],
                                     f"{what}: {start} is told {told} of {errors}")
        found = logs(self.home)
        if not self.problems.expect(len(found) == 1, f"{what}: logs {found}"):
            return
        sources_told = read_log(found[0]) or []
        self.problems.expect(len(sources_told) == len(sources), f"{what}: the log is not whole")
        for source, records in sources_told:
            states = {page["SourcePageNo"]: page["Status"] for page in records}
            stem = Path(source["FileName"]).stem
            bad = {page for page, state in states.items() if state == "Unable to save page!"}
            expected = set() if together else {page for stem_, page in failures if stem_ == stem}
            self.problems.expect(len(states) == PAGES and bad == expected
                                 and all(states[page] == "Completed" for page in set(states) - bad),
                                 f"{what}: the log says {states} of {stem}, failed {sorted(failures)}")

    def check_log(self, fault, is_asked_for):
        """A log that cannot be written is told; the pages are written all the same, unless it shows before."""
        written = self.references["jpg"]
        self.prepare(written, False, False)
        places = self.folder / "logs"
        shutil.rmtree(places, ignore_errors=True)
        places.mkdir()
        fault.below = places if is_asked_for else self.home / "data"
        log = places / "run.xml"
        log.write_text("what was there")
        ended, hits = self.run_with(fault, ["-f", "jpeg", "-o", self.output, "--log", log, *self.sources])
        what = f"log{' asked for' * is_asked_for}, {fault}"
        expect = self.problems.expect
        is_refused = is_asked_for and fault.call == "open" and not fault.is_survived()
        found = {path.name: digest(path) for path in self.output.iterdir()}
        expect(found == ({} if is_refused else written), f"{what}: a page is missing")
        is_kept = log.is_file() and log.read_text() == "what was there"
        found = logs(self.home) if not is_asked_for else [] if is_kept else [log]
        others = [path for folder in (places, self.home / "data") for path in folder.rglob("*")
                  if path.is_file() and path != log and path.suffix != ".log"]
        expect(not others, f"{what}: left {others}")
        for path in found:
            expect(path.is_file() and len(read_log(path) or []) == len(self.sources), f"{what}: {path} is not whole")
        expect(hits, f"{what}: it never came to that")
        if fault.is_survived():
            expect(found and not ended.stderr and ended.returncode == 0, f"{what}: {found}: {ended.stderr}")
        else:
            expect(not found and "log" in ended.stderr, f"{what}: {hits} hits: {found}: {ended.stderr}")
            told = str(log) if is_asked_for else str(fault.below)
            expect(told in ended.stderr, f"{what}: its place is not told: {ended.stderr}")
            code = 4 if is_refused else int(is_asked_for)
            expect(ended.returncode == code, f"{what}: exit code {ended.returncode}")

    def check_small_disk(self, folder):
        """`folder` has room for a part of the outputs."""
        for name, arguments in CONVERSIONS.items():
            written, what = self.references[name], f"small disk, {name}"
            size = sum((self.folder / name / path).stat().st_size for path in written)
            output = folder / "out"
            output.mkdir()
            old = sorted(written)[-1]
            (output / old).write_text("old")
            # What is free is enough for about half of it.
            ballast = folder / "ballast"
            state = os.statvfs(folder)
            ballast.write_bytes(bytes(max(0, state.f_bavail * state.f_frsize - size // 2)))
            command = [*arguments, "--on-exists", "overwrite", "-o", output, *self.sources]
            ended = run([*command, "--jobs", "2"], self.home)
            expect = self.problems.expect
            expect(ended.returncode == 1 and os.strerror(errno.ENOSPC) in ended.stderr,
                   f"{what}: {ended.returncode} {ended.stderr}")
            for path in output.iterdir():
                kept = path.name == old and path.read_bytes() == b"old"
                expect(kept or digest(path) == written.get(path.name), f"{what}: {path.name} is not whole")
            expect((output / old).exists(), f"{what}: the old file is gone")
            self.hits["small disk"] += len(written) - len([path for path in output.iterdir() if path.name != old])
            ballast.unlink()
            subprocess.run(["mount", "-o", "remount,size=64m", folder], check=True)
            ended = run(command, self.home)
            left = {path.name: digest(path) for path in output.iterdir()}
            expect(ended.returncode == 0 and left == written, f"{what}: with room again: {ended.stderr}")
            # Each output can be replaced, one after the other: none may miss the room that later ones took.
            state = os.statvfs(folder)
            size = (state.f_blocks - state.f_bfree) * state.f_frsize
            size += max(path.stat().st_size for path in output.iterdir()) + 5 * state.f_frsize
            subprocess.run(["mount", "-o", f"remount,size={size // state.f_frsize * state.f_frsize}", folder],
                           check=True)
            for jobs in "1888":
                ended = run([*command, "--jobs", jobs], self.home)
                expect(ended.returncode == 0 and not ended.stderr, f"{what}: one at a time, {jobs}: {ended.stderr}")
            shutil.rmtree(output)
            subprocess.run(["mount", "-o", "remount,size=2m", folder], check=True)


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


def faults(rng, call, thorough, in_place):
    """Faults of one call: from the first on, once somewhere, and those that are to be survived."""
    # A file that is written in place could not be put back either.
    for error in () if in_place else REASONS if thorough else [rng.choice(REASONS)]:
        yield Fault(call, error, once=False)
    for error in REASONS if thorough else [rng.choice(REASONS)]:
        # Each file has two closes: the first is looked at, the second comes when it is in place.
        yield Fault(call, error, first=1 + 2 * rng.randrange(2))
    yield Fault(call, errno.EINTR, first=rng.randint(1, 4), once=call != "close")
    if call == "write":
        yield Fault(call, SHORT, once=False)
        yield Fault(call, SHORT, first=rng.randint(1, 4))


def small_disk(ground):
    # In a namespace of its own, so that the mount ends with this script.
    place = ground.folder / "disk"
    place.mkdir()
    probe = f'mount -t tmpfs -o size=2m none "{place}"'
    if os.geteuid() != 0 or not shutil.which("unshare") or subprocess.run(
            ["unshare", "--mount", "sh", "-c", probe], capture_output=True).returncode != 0:
        print("a small disk cannot be mounted here: that part is left out")
        return
    again = f'{probe} && exec "$0" -B "$@"'
    ended = subprocess.run(["unshare", "--mount", "sh", "-c", again, sys.executable, __file__, ground.shim,
                            "--small-disk", place], text=True, capture_output=True)
    ground.problems.expect(ended.returncode == 0, ended.stdout + ended.stderr)
    print(ended.stdout.splitlines()[-1])


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("shim", type=Path)
    parser.add_argument("--all", action="store_true", help="each call with each reason in each format")
    parser.add_argument("--seed", type=int, default=random.randrange(1 << 30))
    parser.add_argument("--small-disk", type=Path, help=argparse.SUPPRESS)
    options = parser.parse_args()
    ground = Ground(str(options.shim.resolve()), (300, 260) if options.small_disk else None)
    if options.small_disk:
        ground.check_small_disk(options.small_disk)
        ground.problems.finish(f"{ground.hits['small disk']} outputs that found no room")
    print(f"seed {options.seed}")
    rng = random.Random(options.seed)
    for call in CALLS:
        for name, place in places(call):
            for fault in faults(rng, call, options.all, "in_place" in place):
                # Of several at work, one that failed is done again by another: once is survived.
                jobs = rng.choice("14") if fault.is_survived() or not fault.once else "1"
                ground.check(fault, name, jobs, **place)
        for is_asked_for in (False, True) if call != "ftruncate" else ():
            for error in (*REASONS, errno.EINTR):
                if call == "fsync" and not is_asked_for:
                    continue  # a new log replaces nothing, and so is not waited for
                ground.check_log(Fault(call, error, once=error == errno.EINTR), is_asked_for)
    small_disk(ground)
    for call in CALLS:
        ground.problems.expect(ground.hits[call], f"no {call} was ever made to fail")
    ground.problems.finish(f"{ground.hits.total()} faults injected: "
                           + ", ".join(f"{call} {ground.hits[call]}" for call in CALLS))


if __name__ == "__main__":
    main()
