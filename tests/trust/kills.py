#!/usr/bin/env python3
"""Ends the command line in mid-run and looks at what is left: kills.py [--kills N] [--signal KILL|TERM]

Whatever bears a final name is complete or as it was, and what else a killed run leaves is taken away
by the next run, unless a program still works on it.
"""

import argparse
import fcntl
import os
import random
import shutil
import signal
import time
from collections import Counter

from trustlib import (CONVERSIONS, SAMPLES, Problems, digest, incompleteness, is_kept_together, logs, make_source,
                      read_log, reference, run, staged_files, start, workspace)

PAGES = 5
PAGE_SIZE = (700, 900)


def is_owned(path):
    """Not so for a moment after it was made: whoever takes it away then makes its owner begin anew."""
    with open(path, "rb") as file:
        try:
            fcntl.flock(file, fcntl.LOCK_SH | fcntl.LOCK_NB)
            return False
        except BlockingIOError:
            return True


class Scene:
    """One conversion of the sources, as it is undisturbed: what it writes and how long it takes."""

    def __init__(self, ground, name):
        self.ground = ground
        self.arguments = ["--on-exists", "overwrite", *CONVERSIONS[name.removesuffix("-own")]]
        self.is_own = name.endswith("-own")
        self.name = name
        self.together = is_kept_together(self.arguments)
        self.written = ground.references[name.removesuffix("-own")]
        self.seconds = {}

    def sources(self, folder):
        if not self.is_own:
            return self.ground.sources
        return [shutil.copy(source, folder / f"{source.stem}.tiff") for source in self.ground.sources]

    def prepare(self, has_old):
        """An output folder and the arguments of a run into it."""
        shutil.rmtree(self.ground.output, ignore_errors=True)
        shutil.rmtree(self.ground.home, ignore_errors=True)
        self.ground.output.mkdir()
        for name in self.written if has_old else ():
            (self.ground.output / name).write_text(f"what was at {name}")
        sources = self.sources(self.ground.output)
        return [*self.arguments, *([] if self.is_own else ["-o", self.ground.output]), *sources]

    def old_digests(self, has_old):
        if not has_old and not self.is_own:
            return {}
        return {path.name: digest(path) for path in self.ground.output.iterdir()}

    def duration(self, jobs, has_old):
        if (jobs, has_old) not in self.seconds:
            arguments = self.prepare(has_old)
            begin = time.monotonic()
            ended = run([*arguments, "--jobs", jobs], self.ground.home)
            self.seconds[jobs, has_old] = time.monotonic() - begin
            self.ground.problems.expect(ended.returncode == 0, f"{self.name}: {ended.stderr}")
        return self.seconds[jobs, has_old]


class Ground:
    def __init__(self):
        self.problems = Problems()
        self.counts = Counter()
        folder = workspace()
        self.output, self.home = folder / "out", folder / "home"
        self.log = folder / "run.xml"
        self.sources = [make_source(folder / f"source {i}.tif", PAGES, PAGE_SIZE, i) for i in range(3)]
        self.originals = [digest(path) for path in self.sources]
        self.references = {name: reference(self.problems, arguments, self.sources, PAGES, folder / name)
                           for name, arguments in CONVERSIONS.items()}
        self.scenes = [Scene(self, name) for name in [*CONVERSIONS, "tiff-own", "tiff-g4-own"]]

    def kill(self, scene, number, moment, jobs, has_old):
        """Ends one run at `moment`, a share of its duration, and checks what it left."""
        moment *= scene.duration(jobs, has_old)
        arguments = scene.prepare(has_old)
        old = scene.old_digests(has_old)
        what = f"{scene.name}, jobs {jobs}, old {has_old}, {number.name} after {moment:.3f} s"
        self.log.unlink(missing_ok=True)
        process = start([*arguments, "--jobs", jobs, "--log", self.log], self.home)
        time.sleep(moment)
        process.send_signal(number)
        _, errors = process.communicate(timeout=60)
        self.counts["kills"] += 1
        # The first moments of a program are without a handler.
        expected = {0, -number, 128 + number} if number == signal.SIGTERM else {0, -number}
        self.problems.expect(process.returncode in expected, f"{what}: exit code {process.returncode}: {errors}")
        if process.returncode == 0:
            # It was faster than when it was measured.
            scene.seconds[jobs, has_old] *= 0.8
        self.counts["mid-run"] += process.returncode != 0
        self.problems.expect([digest(path) for path in self.sources] == self.originals, f"{what}: a source changed")
        pages = self.check_log(scene, what) if process.returncode == 143 else {}
        self.check_files(scene, what, old, pages)
        left = staged_files(self.output)
        self.counts["leftovers"] += len(left)
        if process.returncode != -signal.SIGKILL:
            self.problems.expect(not left, f"{what}: {left} left with exit code {process.returncode}")
        elif left:
            self.sweep(what, left)

    def check_files(self, scene, what, old, pages):
        left = {path.name for path in staged_files(self.output)}
        for path in self.output.iterdir():
            if path.name in left or digest(path) in (old.get(path.name), scene.written.get(path.name)):
                continue
            if not self.problems.expect(path.name in scene.written, f"{what}: {path.name} is none of the outputs"):
                continue
            # A run that is told to stop puts the pages in place that it has.
            count = pages.get(path.name, PAGES) if scene.together else 1
            reason = incompleteness(path, count)
            self.problems.expect(reason is None, f"{what}: {path.name} {reason}")
        missing = set(old) - {path.name for path in self.output.iterdir()}
        self.problems.expect(not missing, f"{what}: {missing} lost")

    def check_log(self, scene, what):
        """The number of pages that the log of an ended run tells of, by output."""
        found = logs(self.home)
        if not self.problems.expect(len(found) == 1 and self.log.is_file(), f"{what}: logs {found}, {self.log}"):
            return {}
        self.problems.expect(digest(found[0]) == digest(self.log), f"{what}: the two logs differ")
        pages = Counter()
        records_by_source = read_log(self.log)
        self.problems.expect(records_by_source is not None, f"{what}: the log is torn")
        for _, records in records_by_source or ():
            pages.update(page["NewFileName"] for page in records if page["Status"] == "Completed")
        for name in pages:
            same_as_old = (self.output / name).is_file() and (self.output / name).read_bytes()[:8] == b"what was"
            self.problems.expect((self.output / name).is_file() and not same_as_old, f"{what}: {name} is not there")
        self.counts["pages in logs"] += pages.total()
        return pages

    def sweep(self, what, left):
        before = {path.name: digest(path) for path in self.output.iterdir() if path not in left}
        ended = run(["-q", "-o", self.output, SAMPLES / "turned.tif"], self.home)
        self.problems.expect(ended.returncode == 0, f"{what}: the next run: {ended.stderr}")
        self.counts["removed"] += len(left) - len(staged_files(self.output))
        self.problems.expect(not staged_files(self.output), f"{what}: the next run left {staged_files(self.output)}")
        (self.output / "turned1.jpg").unlink()
        after = {path.name: digest(path) for path in self.output.iterdir() if path not in left}
        self.problems.expect(after == before, f"{what}: the next run changed other files")

    def stop_at_work(self, scene, jobs):
        """A run that stands still, and the unfinished files that it works on."""
        for _ in range(50):
            process = start([*scene.prepare(False), "--jobs", jobs], self.home)
            while process.poll() is None:
                if not staged_files(self.output):
                    continue
                process.send_signal(signal.SIGSTOP)
                os.waitid(os.P_PID, process.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT)
                if owned := [path for path in staged_files(self.output) if is_owned(path)]:
                    return process, owned
                process.send_signal(signal.SIGCONT)
            process.communicate()
        raise SystemExit(f"{scene.name}: the run was never seen at work")

    def share_folder(self, scene, jobs):
        """Another run into the folder leaves alone what a program that stands still works on."""
        process, owned = self.stop_at_work(scene, jobs)
        what = f"{scene.name}, jobs {jobs}, stopped"
        abandoned = self.output / ".pagestack-1-0.part"
        foreign = [self.output / name
                   for name in (".pagestack-1.part", ".pagestack-1-0.part.old", "pagestack-1-0.part")]
        for path in [abandoned, *foreign]:
            path.write_text("x")
        ended = run(["-o", self.output, SAMPLES / "turned.tif"], self.home / "other")
        self.problems.expect(ended.returncode == 0, f"{what}: the other run: {ended.stderr}")
        self.problems.expect(all(path.exists() for path in [*owned, *foreign]), f"{what}: files of others removed")
        self.problems.expect(not abandoned.exists(), f"{what}: the file without an owner was left")
        process.send_signal(signal.SIGCONT)
        _, errors = process.communicate(timeout=60)
        self.problems.expect(process.returncode == 0, f"{what}: continued: {process.returncode} {errors}")
        for path in foreign:
            path.unlink(missing_ok=True)
        (self.output / "turned1.jpg").unlink()
        written = {path.name: digest(path) for path in self.output.iterdir()}
        self.problems.expect(written == scene.written, f"{what}: written {sorted(written)}")
        self.counts["shared"] += 1


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--kills", type=int, default=40, help="over all formats together")
    parser.add_argument("--signal", choices=["KILL", "TERM"], help="default: both in turn")
    parser.add_argument("--seed", type=int, default=random.randrange(1 << 30))
    options = parser.parse_args()
    print(f"seed {options.seed}")
    rng = random.Random(options.seed)
    ground = Ground()
    scenes = ground.scenes
    rounds = -(-options.kills // len(scenes))
    for turn in range(rounds):
        number = signal.Signals[f"SIG{options.signal or ('KILL', 'TERM')[turn % 2]}"]
        for place, scene in enumerate(scenes[:options.kills - turn * len(scenes)]):
            has_old = (turn // 2 + place) % 2 == 0 and not scene.is_own
            # Each scene has its moments spread over all of its run.
            ground.kill(scene, number, (turn + rng.random()) / rounds, rng.choice("14"), has_old)
    for scene in [scenes[0], scenes[4], scenes[7]]:
        ground.share_folder(scene, "1")
        ground.share_folder(scene, "4")
    counts = ground.counts
    ground.problems.expect(counts["mid-run"] * 3 >= counts["kills"], "fewer than a third of the kills were in mid-run")
    ground.problems.finish(
        f"{counts['kills']} kills, {counts['mid-run']} in mid-run, {counts['leftovers']} files left, "
        f"{counts['removed']} removed by the next run, {counts['pages in logs']} pages in the logs of ended runs, "
        f"{counts['shared']} folders shared with a stopped run")


if __name__ == "__main__":
    main()
