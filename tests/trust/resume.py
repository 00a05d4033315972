#!/usr/bin/env python3
"""Kills runs of a plan in mid-run and goes on with --resume: resume.py [--kills N]

At the end every output is that of an undisturbed run, no page but a last one was done twice, and a further run does
nothing; outputs that were lost or changed meanwhile are written anew, others are not touched.
"""

import argparse
import json
import random
import time

from trust import CONVERSIONS, Ground, digests, ended, expect, finish, run, start

SHARDS = 2
PAGES = 6
ground, rng = Ground(PAGES, 300), random.Random()


def go_on(name, plan, states, seconds, kills):
    """Kills the parts in turn until they are through; gives the number of kills."""
    done, left = 0, list(range(SHARDS))
    while left:
        shard = rng.choice(left)
        process = start(["run", "--plan", plan, "--shard", f"{shard}/{SHARDS}", "--resume", states[shard], "-q",
                         "--no-log", "--jobs", rng.choice("13")], ground.home)
        if done < kills:
            time.sleep(rng.random() * seconds / 2)
            process.kill()
        errors = ended(process).stderr
        if process.returncode == 0:
            left.remove(shard)
        done += process.returncode < 0
        expect(process.returncode == 0 or (process.returncode == -9 and not errors), f"{name}: {process.returncode} {errors}")
    return done


def check_once(name, events):
    """What is to be said of a source as a whole is found out with its last page, once more if a kill came before."""
    written, ended, last = set(), set(), {}
    for event in events:
        if event["type"] == "page":
            last[event["source"]] = max(event["page"], last.get(event["source"], 0))
    for event in events:
        source, page = event.get("source"), event.get("page")
        if event["type"] == "page" and event["outcome"] == "written":
            expect((source, page) not in written or (page == last[source] and source not in ended), f"{name}: twice: {event}")
            written.add((source, page))
        elif event["type"] == "source" and event["outcome"] == "done":
            expect(source not in ended, f"{name}: ended twice: {event}")
            ended.add(source)


def check(name, kills):
    ground.prepare(name)
    words = [*CONVERSIONS[name], "-o", ground.output, *ground.sources]
    plan, states = ground.folder / "plan", [ground.folder / f"state-{i}" for i in range(SHARDS)]
    for state in states:
        state.unlink(missing_ok=True)
    planned = run(["plan", *words], ground.home)
    expect(planned.returncode == 0 and not planned.stderr, f"{name}: plan: {planned.stderr}")
    plan.write_text(planned.stdout, encoding="utf-8")
    begin = time.monotonic()
    expect(run([*words, "-q"], ground.home).returncode == 0, f"{name}: undisturbed")
    seconds, wanted = time.monotonic() - begin, ground.written[name]
    ground.prepare(name)
    kills = go_on(name, plan, states, seconds, kills)
    expect(digests(ground.output) == wanted, f"{name}: other outputs after {kills} kills")
    for state in states:
        check_once(name, [json.loads(line) for line in state.read_text(encoding="utf-8").splitlines() if line.endswith("}")])
    merged = run(["merge-logs", "--plan", plan, *states, "--verify"], ground.home)
    expect(merged.returncode == 0, f"{name}: merge: {merged.stdout}{merged.stderr}")
    # Nothing is left to do, but for what is not as it was left.
    victims = rng.sample(sorted(wanted), 2)
    (ground.output / victims[0]).unlink()
    (ground.output / victims[1]).write_bytes(b"another's")
    times = {path: path.stat().st_mtime_ns for path in ground.output.rglob("*") if path.name not in victims}
    told = "".join(run(["run", "--plan", plan, "--shard", f"{i}/{SHARDS}", "--resume", states[i], "-q", "--no-log"],
                       ground.home).stderr for i in range(SHARDS))
    expect(digests(ground.output) == wanted, f"{name}: {victims} not written anew")
    expect(victims[1] in told and victims[0] not in told, f"{name}: told {told}")
    expect(times == {path: path.stat().st_mtime_ns for path in times}, f"{name}: others were touched")
    return kills


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--kills", type=int, default=24, help="over all formats together")
    most = parser.parse_args().kills
    names = [name for name in CONVERSIONS if name in ("png", "gif", "tiff", "tiff-split")]
    kills, rounds = 0, 0
    while kills < most and rounds < 8:
        kills += sum(check(name, most // len(names)) for name in names)
        rounds += 1
    expect(kills >= most // 2, f"only {kills} kills were in mid-run")
    finish(f"{kills} kills")


if __name__ == "__main__":
    main()
