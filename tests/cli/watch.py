#!/usr/bin/env python3
"""Runs 'pagestack-convert watch' over folders into which files come: watch.py [--files N] [--kills K]

No file is lost or converted twice, whatever comes between: half-written files, names that are taken, a
full disk, a second watcher, and kills at random moments, with and without events of the system.
"""

import argparse
import fcntl
import hashlib
import os
import random
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
from collections import Counter
from pathlib import Path

PROGRAM = Path(os.environ.get("PAGESTACK_BIN", "build/dev/bin")) / "pagestack-convert"
QUICK = ["--settle", "0.1", "--jobs", "2"]
PATIENCE = 180  # seconds


def tiff(seed, pages=1, side=48):
    """Gray pages, unlike those of other seeds."""
    data, link = bytearray(b"II*\0\0\0\0\0"), 4
    for page in range(pages):
        samples = random.Random(f"{seed} {page}").randbytes(side * side)
        tags = [(256, 3, side), (257, 3, side), (258, 3, 8), (259, 3, 1), (262, 3, 1), (273, 4, len(data)),
                (277, 3, 1), (278, 3, side), (279, 4, len(samples))]
        data += samples
        struct.pack_into("<I", data, link, len(data))
        data += struct.pack("<H", len(tags)) + b"".join(struct.pack("<HHII", *tag[:2], 1, tag[2]) for tag in tags)
        link = len(data)
        data += bytes(4)
    return bytes(data)


def expect(is_true, text):
    if not is_true:
        sys.exit(f"watch.py: {text}")


def wait_for(what, condition):
    end = time.monotonic() + PATIENCE
    while not condition():
        expect(time.monotonic() < end, f"waited in vain: {what}")
        time.sleep(0.01)


class Room:
    """A folder with `in` and `out`, and the program that watches."""

    def __init__(self, folder, *words):
        self.folder, self.words, self.errors, self.process = Path(folder), [*QUICK, *words], "", None
        (self.folder / "in").mkdir(parents=True)
        self.elsewhere = self.folder / "elsewhere"
        self.elsewhere.mkdir()

    def start(self, *words, before=None):
        self.process = subprocess.Popen(
            [PROGRAM, "watch", "in", "-o", "out", *self.words, *words], cwd=self.folder, text=True,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, preexec_fn=before)
        return self

    def end(self, number=signal.SIGTERM):
        if number:
            self.process.send_signal(number)
        _, errors = self.process.communicate(timeout=PATIENCE)
        self.errors += errors
        return self.process.returncode

    def once(self):
        self.start("--once")
        return self.end(0)

    def names(self, below):
        return sorted(path.name for path in (self.folder / below).rglob("*")
                      if path.is_file() and not path.name.startswith("."))

    def bytes_of(self, below):
        return Counter(hashlib.sha256(path.read_bytes()).hexdigest() for path in (self.folder / below).rglob("*")
                       if path.is_file() and not path.name.startswith("."))

    def write(self, name, data):
        path = self.folder / "in" / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(data)
        return path

    def check(self, what, **wanted):
        for below, names in wanted.items():
            below = {"done": "in/done", "failed": "in/failed"}.get(below, below)
            found = self.names(below)
            expect(found == sorted(names), f"{what}: {below} has {found}, not {names}; {self.errors}")


def grows(room):
    """Only the whole of a file that grows is converted; what is renamed in is whole."""
    room.words = ["--settle", "0.4"]
    room.start()
    whole = tiff("grows", 2)
    with open(room.folder / "in/a.tif", "wb", buffering=0) as file:
        for i in range(0, len(whole), 500):
            file.write(whole[i:i + 500])
            time.sleep(0.05)
    wait_for("a.tif", lambda: room.names("in/done") == ["a.tif"])
    room.check("grown", out=["a1.jpg", "a2.jpg"], failed=[])
    room.end()
    room.words = ["--settle", "3600"]
    room.start("-v")
    expect("by what the system tells" in room.process.stdout.readline(), "there are no events")
    (room.elsewhere / "b.tif").write_bytes(tiff("moved"))
    room.write("c.tif", tiff("rests"))
    os.rename(room.elsewhere / "b.tif", room.folder / "in/b.tif")
    wait_for("b.tif", lambda: "b.tif" in room.names("in/done"))
    expect((room.folder / "in/c.tif").exists() and room.end() == 128 + signal.SIGTERM, "c.tif was at rest")


def fails(room):
    """A file that fails gets its reasons; names that are taken get numbers, and nothing is replaced."""
    for turn in (1, 2):
        room.write("a.tif", tiff(turn))
        room.write("cut.tif", tiff(turn, 2)[:-200])
        room.write("box/b.tif", tiff(turn))
        room.write(".hidden.tif", b"")
        expect(room.once() == 1, f"cut.tif did not fail: {room.errors}")
    room.check("twice", done=["a.tif", "a-2.tif"], out=["a1.jpg", "a1-2.jpg", "cut1.jpg", "cut1-2.jpg"],
               failed=["cut.tif", "cut.tif.txt", "cut-2.tif", "cut-2.tif.txt"])
    note = (room.folder / "in/failed/cut-2.tif.txt").read_text()
    expect("out/cut1-2.jpg" in note and "cut-2" not in note, f"the reasons are {note}")
    room.words.append("-r")
    expect(room.once() == 0 and (room.folder / "in/done/box/b.tif").exists(), f"box: {room.errors}")


def ends(room):
    """Names that leave no room for a number or a note do not keep the program busy for ever."""
    for turn in (1, 2):
        for length in (247, 251):
            room.write("n" * length + ".tif", tiff(turn, 2)[:-200])
        expect(room.once() == 1 and not list((room.folder / "in").glob("*.tif")), f"they are left: {room.errors}")
    expect(len(room.names("in/failed")) == 8, f"failed: {room.names('in/failed')}")


def keeps(room):
    """Outputs are not replaced by a source that had their names before, nor removed with it."""
    room.words += ["-f", "png"]
    state = room.folder / "out/.pagestack-watch.jsonl"
    path = room.write("a.tif", tiff("begun", 1, 6000))
    room.start()
    wait_for("a.tif", lambda: state.exists() and '"begin"' in state.read_text())
    room.end(signal.SIGKILL)
    room.check("begun", out=[])
    with open(path, "rb+") as file:
        fcntl.flock(file, fcntl.LOCK_EX)
        room.write("a.tiff", tiff("other"))
        expect(room.once() == 75, "a locked file was taken")
        room.check("other", out=["a1-2.png"], done=["a.tiff"])
    expect(room.once() == 0, room.errors)
    room.check("both", out=["a1.png", "a1-2.png"], done=["a.tif", "a.tiff"])
    room.write("b.tif", tiff("first"))
    expect(room.once() == 0, room.errors)
    before = room.bytes_of("out")
    lines = state.read_text().splitlines(True)
    state.write_text("".join(lines[:-2]))  # converted, but not put away yet
    os.rename(room.folder / "in/done/b.tif", room.folder / "in/b.tif")
    room.write("b.tif", tiff("second"))
    expect(room.once() == 0 and "written anew" in room.errors, f"nothing was told: {room.errors}")
    room.check("again", out=["a1.png", "a1-2.png", "b1.png", "b1-2.png"], done=["a.tif", "a.tiff", "b.tif"])
    expect(before <= room.bytes_of("out"), "an output is another")


def waits(room):
    """What another program has is waited for; a second watcher and what cannot be are refused."""
    path = room.write("a.tif", tiff("locked"))
    with open(path, "rb+") as file:
        fcntl.flock(file, fcntl.LOCK_EX)
        expect(room.once() == 75 and path.exists() and not room.names("in/done"), "a locked file was taken")
    room.start("--settle", "0.1")
    wait_for("a.tif", lambda: room.names("in/done") == ["a.tif"])
    first, room.process = room.process, None
    room.start("--state", "other")
    expect(room.end(0) == 4 and "watched by another" in room.errors, f"a second watcher: {room.errors}")
    room.process = first
    room.end()
    room.start("--done", "in")
    expect(room.end(0) == 4, "done files go where they were")


def lacks_room(room):
    """On a full disk files stay, are tried again and told of once."""
    small = room.folder / "small"
    small.mkdir()
    if os.getuid() or subprocess.run(["mount", "-t", "tmpfs", "-o", "size=200k", "none", small],
                                     stderr=subprocess.DEVNULL, check=False).returncode:
        print("a full disk was left out: nothing can be mounted")
        return
    try:
        (small / "filler").write_bytes(bytes(180 * 1024))
        room.words = [*QUICK, "-o", "small", "-f", "bmp", "--state", "state"]
        room.start("-v").process.stdout.readline()
        for i in range(3):
            room.write(f"{i}.tif", tiff(i, 1, 200))
        begins = lambda: (room.folder / "state").read_text().count('"begin"')
        wait_for("another try", lambda: begins() >= 2)
        room.check("full", done=[], failed=[])
        (small / "filler").unlink()
        wait_for("room", lambda: len(room.names("in/done")) == 3)
        room.end()
        expect(room.errors.count("0.tif[1]") == 1 and not room.names("in/failed"), f"told: {room.errors}")
    finally:
        subprocess.run(["umount", small], check=True)


def survives(room, files, kills, dice):
    """Kills at random moments lose and double nothing."""
    calm = Room(room.folder / "calm", *room.words)
    made = {f"{i}.tif" if i % 5 else f"{max(i, 1) - 1}.tiff": tiff(i, 1 + i % 4, 700) if i % 17 else tiff(i, 2)[:-300]
            for i in range(files)}  # some want the names of others, some are cut off
    for name, data in made.items():
        calm.write(name, data)
    calm.once()
    names, moments = list(made), sorted(dice.sample(range(files), kills))
    for i, name in enumerate(names):
        if i % 8 == 0 and (room.process is None or room.process.poll() is not None):
            room.start()
        if (i + (i % 5 == 0)) % 2:  # who want the same names come the same way
            (room.elsewhere / name).write_bytes(made[name])
            os.rename(room.elsewhere / name, room.folder / "in" / name)
        else:
            room.write(name, made[name])
        time.sleep(dice.uniform(0, 0.02))
        if i in moments:
            if room.process.poll() is not None:
                room.start()
            time.sleep(dice.uniform(0.01, 0.4))
            expect(room.end(signal.SIGKILL) == -signal.SIGKILL, f"it ended before: {room.errors}")
            if len(moments) > 1 and i == moments[-1]:
                room.start()
    if room.process.poll() is not None:
        room.start()
    wait_for("all", lambda: not any((room.folder / "in" / name).exists() for name in names))
    room.end()
    for below in ("in/done", "out"):  # a kill may change who comes first, and so who gets the number
        found, wanted = ([name.replace("-2.", ".") for name in one.names(below)] for one in (room, calm))
        expect(Counter(found) == Counter(wanted) and room.bytes_of(below) == calm.bytes_of(below),
               f"{below}: {Counter(found) - Counter(wanted)} too many, {Counter(wanted) - Counter(found)} "
               f"missing; {room.errors}")
    room.check("failed", failed=calm.names("in/failed"))
    put = len(room.names("in/done")), len(room.names("in/failed")) // 2
    expect(sum(put) == files, f"{files} came, {put} went")
    return f"{files} in = {put[0]} done + {put[1]} failed, {len(room.names('out'))} outputs, {kills} kills"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--files", type=int, default=30)
    parser.add_argument("--kills", type=int, default=4)
    parser.add_argument("--seed", type=int, default=random.randrange(10**6))
    asked = parser.parse_args()
    print("seed", asked.seed)
    with tempfile.TemporaryDirectory() as folder:
        for case in (grows, fails, ends, keeps, waits, lacks_room):
            case(Room(Path(folder) / case.__name__))
        for words in ([], ["--poll", "0.05"]):
            room = Room(Path(folder) / f"killed{len(words)}", *words)
            print(*words, survives(room, asked.files, asked.kills, random.Random(asked.seed)))
            shutil.rmtree(room.folder)


if __name__ == "__main__":
    main()
