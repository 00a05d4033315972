#!/usr/bin/env python3
"""Kills runs of many parts at random moments and goes on with --resume: kills.py [--kills N]

Catches a plan, a state or a log that a kill leaves torn and that is then believed; pages that are lost or done twice
when a run goes on; stops that are noted as failures, and files that a killed run leaves behind.
"""

import argparse
import hashlib
import json
import random
import shutil
import signal
import sys
import time
from collections import Counter
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "trust"))
from trust import ended, expect, finish, picture, run, start, workspace, write_tiff  # noqa: E402

SHARDS = 3
rng, counts, seconds = random.Random(), Counter(), {}
ground = workspace()
home, scans = ground / "home", ground / "scans"


def files(folder, pattern="**/*"):
    """The digests of all files of a tree, by names below it."""
    return {str(path.relative_to(folder)): hashlib.sha256(path.read_bytes()).hexdigest()
            for path in folder.glob(pattern) if path.is_file()}


def kill(command, words, folder, **how):
    """Starts a command and kills it somewhere in its usual time; says whether it was still at work."""
    begin = time.monotonic()
    process = start(words, home, cwd=folder, **how)
    time.sleep(rng.random() * seconds.get(command, 0.2))
    with_notice = rng.random() < 0.25
    process.send_signal(signal.SIGTERM if with_notice else signal.SIGKILL)
    done = ended(process)
    was_at_work = done.returncode in (-signal.SIGKILL, -signal.SIGTERM, 128 + signal.SIGTERM)
    if not was_at_work:
        seconds[command] = 0.8 * (time.monotonic() - begin)
    expect(was_at_work or done.returncode == 0, f"{command}: {done}")
    counts[f"{command} killed"] += was_at_work
    counts["too late"] += not was_at_work
    return was_at_work


def timed(command, words, folder, **how):
    begin = time.monotonic()
    done = run(words, home, cwd=folder, **how)
    seconds[command] = time.monotonic() - begin
    expect(done.returncode == 0 and not done.stderr, f"{command}: {done}")
    return done.stdout


def lines(path):
    """The whole lines of a file of JSON objects; one that a kill has cut off is none."""
    made = []
    for line in path.read_text().splitlines() if path.exists() else ():
        try:
            made.append(json.loads(line))
        except ValueError:
            counts["lines cut off"] += 1
    return made


class Case:
    """A plan in a folder of its own, and what an undisturbed run makes of it."""

    def __init__(self, name, *options):
        self.name, self.folder = name, ground / name
        self.folder.mkdir()
        self.out, self.whole = self.folder / "out", {}
        self.plan_words = ["plan", "-r", "--mirror", "-o", "out", *options, str(scans)]
        self.plan = timed("plan", self.plan_words, self.folder)
        (self.folder / "plan.jsonl").write_text(self.plan)
        timed("run", ["run", "--plan", "plan.jsonl", "--resume", "state.jsonl", "-q"], self.folder)
        seconds["run"] /= SHARDS
        timed("merge-logs", self.merge_words("state.jsonl"), self.folder)
        self.whole = files(self.out)

    def merge_words(self, *states):
        return ["merge-logs", "--plan", "plan.jsonl", *states, "--verify", "--log", "merged.xml"]

    def start_again(self):
        shutil.rmtree(self.out)
        for path in (*self.folder.glob("state*"), self.folder / "merged.xml"):
            path.unlink()

    def kill_plan(self):
        """What a killed plan leaves is the whole plan or refused."""
        cut = self.folder / "cut.jsonl"
        with cut.open("w") as output:
            kill("plan", self.plan_words, self.folder, stdout=output)
        if cut.read_text() != self.plan:
            done = run(["run", "--plan", "cut.jsonl"], home, cwd=self.folder)
            expect(done.returncode not in (0, 75) and not self.out.exists(), f"{self.name}: a plan that is cut: {done}")
        expect(timed("plan", self.plan_words, self.folder) == self.plan, f"{self.name}: another plan")

    def kill_run(self, shard):
        """Whatever bears a final name is whole or noted as stopped, and what the state says is done stays as it is."""
        kill("run", self.run_words(shard), self.folder)
        events = lines(self.folder / f"state-{shard}.jsonl")
        for event in events:
            expect(event.get("outcome") != "failed", f"{self.name}, shard {shard}: a kill is noted as a failure: {event}")
            if event.get("outcome") == "stopped" and "output" in event:
                self.stopped.add((event["output"]["path"], event["output"]["sha256"]))
        for name, digest in files(self.out).items():
            if "/." not in f"/{name}" and (str(self.out / name), digest) not in self.stopped:
                expect(self.whole.get(name) == digest, f"{self.name}, shard {shard}: {name} is not whole")
        done = {event["line"]: event for event in events if event["type"] == "source" and event["outcome"] == "done"}
        for event in events:
            path = done.get(event.get("line"), {}).get("output", event).get("path") or event.get("output")
            if event["type"] == "page" and event["line"] in done and path:
                self.finished.setdefault(path, Path(path).stat().st_ino)

    def run_words(self, shard):
        return ["run", "--plan", "plan.jsonl", "--shard", f"{shard}/{SHARDS}", "--resume", f"state-{shard}.jsonl", "-q",
                "--jobs", rng.choice("12")]

    def kill_runs(self, kills):
        self.finished, self.stopped = {}, set()
        for number in range(kills):
            self.kill_run(number % SHARDS)
        for shard in range(SHARDS):
            done = run(self.run_words(shard), home, cwd=self.folder)
            expect(done.returncode == 0 and not done.stderr, f"{self.name}, shard {shard}: {done}")
        for path, inode in self.finished.items():
            expect(Path(path).stat().st_ino == inode, f"{self.name}: {path} was finished and written again")
        counts["outputs not written again"] += len(self.finished)
        there = files(self.out)
        expect(there == self.whole, f"{self.name}: lost {set(self.whole) - set(there)}, too many {set(there) - set(self.whole)}")

    def kill_merge(self):
        """The log is whole or not there, and the states are as they were."""
        log, states = self.folder / "merged.xml", sorted(path.name for path in self.folder.glob("state-*.jsonl"))
        before = files(self.folder, "state-*")
        timed("merge-logs", self.merge_words(*states), self.folder)
        whole = log.read_bytes()
        log.unlink()
        kill("merge-logs", self.merge_words(*states), self.folder)
        expect(not log.exists() or log.read_bytes() == whole, f"{self.name}: a torn log")
        expect(files(self.folder, "state-*") == before, f"{self.name}: merging changed a state")
        timed("merge-logs", self.merge_words(*states), self.folder)
        expect(log.read_bytes() == whole, f"{self.name}: another log after a kill")
        left = [path.name for path in self.folder.iterdir() if path.name.startswith(".")]
        expect(not left, f"{self.name}: left behind: {left}")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--kills", type=int, default=50, help="over all commands together")
    kills = parser.parse_args().kills
    for number in range(40):
        folder = scans / f"box{number % 3}"
        folder.mkdir(parents=True, exist_ok=True)
        pages = [picture(number * 20 + page, 301, 403, noisy=number % 2) for page in range(1 + number * 7 % 13)]
        write_tiff(folder / f"scan{number}-.tif", pages)
    originals = files(scans)
    for name, *options in (("pages", "-f", "png"), ("together", "-f", "tiff", "--verify")):
        case = Case(name, *options)
        case.start_again()
        for _ in range(kills // 10):
            case.kill_plan()
        case.kill_runs(kills * 3 // 10)
        for _ in range(kills // 10):
            case.kill_merge()
    expect(files(scans) == originals, "a source changed")
    expect(counts["run killed"] * 2 >= counts["too late"], "most kills came too late")
    finish(", ".join(f"{count} {what}" for what, count in sorted(counts.items())))


if __name__ == "__main__":
    main()
