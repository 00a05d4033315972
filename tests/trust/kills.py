#!/usr/bin/env python3
"""Kills the command line in mid-run and looks at what is left: kills.py [--kills N]

Whatever bears a final name is complete or as it was, and what else a killed run leaves is taken away
by the next run, unless a program still works on it.
"""

import argparse
import os
import random
import shutil
import signal
import time
from collections import Counter

from trust import CONVERSIONS, Ground, digests, ended, expect, finish, halt, run, staged_files, start, troubles

ground, counts, seconds = Ground(5, 700), Counter(), {}


def run_beside(what):
    """Another run into the folder; what it leaves besides its own output."""
    source = shutil.copy(ground.sources[0], ground.folder / "other.tif")
    done = run(["-q", "-f", "tiff", "-o", ground.output, source], ground.home / "other")
    expect(done.returncode == 0, f"{what}: the other run: {done.stderr}")
    (ground.output / "other.tiff").unlink()


def kill(name, moment, jobs, **how):
    """Kills one run at `moment`, a share of its duration, and checks what it left."""
    key, what = (name, jobs, *how.values()), f"{name}, jobs {jobs}, {how}, killed at {moment:.2f}"
    if key not in seconds:
        begin = time.monotonic()
        done = run([*ground.prepare(name, **how)[0], "--jobs", jobs], ground.home)
        seconds[key] = time.monotonic() - begin
        expect(done.returncode == 0, f"{what}: {done.stderr}")
    words, old = ground.prepare(name, **how)
    process = start([*words, "--jobs", jobs], ground.home)
    time.sleep(moment * seconds[key])
    process.kill()
    errors = ended(process).stderr
    counts["kills"] += 1
    counts["in mid-run"] += process.returncode != 0
    if process.returncode == 0:
        seconds[key] *= 0.8  # it was faster than when it was measured
    expect(process.returncode in (0, -signal.SIGKILL), f"{what}: exit code {process.returncode}: {errors}")
    ground.check_sources(what)
    left = {path.name for path in staged_files(ground.output)}
    counts["files left"] += len(left)
    there = digests(ground.output)
    for path, digest in there.items():
        whole = path in left or digest in (old.get(path), ground.written[name].get(path))
        expect(whole, f"{what}: {path} is neither complete nor as it was")
    expect(set(old) <= set(there), f"{what}: {set(old) - set(there)} lost")
    run_beside(what)
    there = {path: digest for path, digest in there.items() if path not in left}
    expect(digests(ground.output) == there, f"{what}: the next run left {sorted(digests(ground.output))}")


def share_folder(name, jobs):
    """Another run into the folder leaves alone what a program that stands still works on."""
    what, process = f"{name}, jobs {jobs}, stopped", None
    while process is None or process.poll() is not None:  # until a run is seen at work
        process = start([*ground.prepare(name)[0], "--jobs", jobs], ground.home)
        while process.poll() is None and not staged_files(ground.output):
            time.sleep(0.0005)
        halt(process)
    run_beside(what)
    process.send_signal(signal.SIGCONT)
    done = ended(process)
    expect(done.returncode == 0 and not troubles(done), f"{what}: continued: {done}")
    expect(digests(ground.output) == ground.written[name], f"{what}: written {os.listdir(ground.output)}")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--kills", type=int, default=40, help="over all formats together")
    kills, rng = parser.parse_args().kills, random.Random()
    cases = [*((name, False) for name in CONVERSIONS), ("tiff", True), ("tiff-g4", True)]
    rounds = -(-kills // len(cases))
    for number in range(kills):
        turn, place = divmod(number, len(cases))
        name, is_own = cases[place]
        # Each case has its moments spread over all of its run.
        kill(name, (turn + rng.random()) / rounds, rng.choice("14"),
             has_old=(turn // 2 + place) % 2 == 0 and not is_own, is_own=is_own)
    for name in ("jpg", "tiff", "tiff-split"):
        share_folder(name, "1")
        share_folder(name, "4")
    expect(counts["in mid-run"] * 3 >= counts["kills"], "fewer than a third of the kills were in mid-run")
    expect(counts["files left"], "no kill left a file behind")
    finish(", ".join(f"{count} {what}" for what, count in counts.items()))


if __name__ == "__main__":
    main()
