#!/usr/bin/env python3
"""clang-tidy over every source: check-tidy.py BUILD [FOLDER...]

BUILD is a build folder whose commands and generated headers are used;
FOLDER is below the root, such as engine/image, all when none is named. Exits with 1 where something is
found, with 77 where there is no clang-tidy.

Most of the time of clang-tidy goes into the headers of Qt, once a file. So the files of neighbouring
folders are joined to one and what is said about that is put down to the file and line it came from. Files
that cannot stand beside the others, as both have a function of one name, are joined among themselves.
"""

import json
import os
import re
import shlex
import shutil
import subprocess
import sys
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
# The path analysis takes half of the time and a test that it would find something in fails anyway.
# Speed, large products and copies of fixtures do not matter there, and a test has one thread by itself.
IN_TESTS = ",".join(f"-{check}" for check in (
    "clang-analyzer-*", "performance-*", "bugprone-*widening*", "bugprone-too-small-loop-variable",
    "concurrency-mt-unsafe", "cppcoreguidelines-special-member-functions", "cppcoreguidelines-pro-type-member-init"))
# Bytes; some units for each processor, and no folder waits for the end of a very long one.
LARGE_PACK = 100_000
# What is cheap, to find out whether files can stand together.
PARSED_ONLY = "-*,misc-misplaced-const"
# An assertion tells the path analysis what cannot be.
WITHOUT_ASSERTIONS = ("-DNDEBUG", "-DQT_NO_DEBUG")
MESSAGE = re.compile(r"^(?P<path>[^\s:][^:]*):(?P<line>\d+):(?P<column>\d+): (?P<text>.*)$")


def sources_by_folder(build, wanted):
    """{folder: {path: flags}} of what BUILD compiles and nobody generated."""
    folders = {}
    for entry in json.loads((build / "compile_commands.json").read_text()):
        compiled = Path(entry["file"])
        # A unity build joins files itself.
        joined = re.findall(r'#include "(.*)"', compiled.read_text()) if "Unity" in compiled.parts else [compiled]
        for path in map(Path, joined):
            if path.suffix != ".cpp" or build in path.parents or ROOT not in path.parents:
                continue
            folder = str(path.parent.relative_to(ROOT))
            if not wanted or any(f"{folder}/".startswith(f"{name.rstrip('/')}/") for name in wanted):
                folders.setdefault(folder, {})[path] = list(flags_of(entry["command"]))
    return folders


def flags_of(command):
    words = iter(shlex.split(command))
    for word in words:
        if word == "-isystem":
            yield (word, next(words))
        elif word.startswith(("-I", "-D", "-std=")) and word not in WITHOUT_ASSERTIONS:
            yield (word,)
    yield ("-DQT_FORCE_ASSERTS",)
    yield ("-D_GLIBCXX_ASSERTIONS",)


class Joined:
    """Several files as one, in BUILD/tidy."""

    def __init__(self, build, sources):
        self.sources = sorted(sources)
        name = "-".join((*self.sources[0].relative_to(ROOT).with_suffix("").parts, str(len(sources))))
        self.path = build / "tidy" / f"{name}.cpp"
        # A dictionary is an ordered set.
        self.flags = dict.fromkeys(flag for path in self.sources for flag in sources[path])
        self.flags.update({("-iquote", str(path.parent)): None for path in self.sources})
        self.origin = {}
        lines = []
        for number, path in enumerate(self.sources):
            lines += ["#undef main", f"#define main main{number}"]
            for line, text in enumerate(path.read_text().splitlines(), 1):
                lines.append(text)
                self.origin[len(lines)] = (path, line)
        self.path.write_text("\n".join(lines) + "\n")

    def examine(self, *options):
        """Messages as (path, line, text), with the lines that explain them."""
        run = subprocess.run(
            ["clang-tidy", "--quiet", f"--config-file={ROOT / '.clang-tidy'}", *options, str(self.path),
             "--", *(word for flag in self.flags for word in flag), "-Wno-everything"],
            capture_output=True, text=True)
        found = []
        for text in run.stdout.splitlines():
            message = MESSAGE.match(text)
            if message:
                place = Path(message["path"]), int(message["line"])
                if place[0] == self.path:
                    place = self.origin.get(place[1], place)
                if message["text"].startswith("note:") and found:
                    found[-1][2] += f"\n{os.path.relpath(place[0], ROOT)}:{place[1]}: {message['text']}"
                else:
                    found.append([*place, message["text"]])
            elif found:
                found[-1][2] += "\n" + text
        if run.returncode and not found:
            found.append([self.path, 0, "error: " + (run.stderr.strip() or f"status {run.returncode}")])
        return found


def packed(folders):
    """Neighbouring folders together, as [{path: flags}]: tests and users of widgets apart from the rest."""
    packs = []
    last = None
    for folder, sources in sorted(folders.items()):
        kind = folder.startswith("tests"), any("QT_WIDGETS_LIB" in flag[0] for flag in next(iter(sources.values())))
        if kind != last or sum(path.stat().st_size for path in packs[-1]) > LARGE_PACK:
            packs.append({})
        last = kind
        packs[-1].update(sources)
    return packs


def units(build, sources):
    """What is looked at in one go: all files, or in several goes those that clash with the files before them."""
    left = dict(sources)
    while left:
        joined = Joined(build, left)
        clashing = {path for path, _, text in joined.examine(f"--checks={PARSED_ONLY}")
                    if text.startswith("error:")} & set(left)
        if not clashing or len(left) == 1:
            yield joined
            return
        rest = {path: flags for path, flags in left.items() if path not in clashing}
        if not rest:
            yield from (Joined(build, {path: left[path]}) for path in left)
            return
        yield Joined(build, rest)
        left = {path: left[path] for path in clashing}


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    if not shutil.which("clang-tidy"):
        print("There is no clang-tidy here.")
        sys.exit(77)
    build = Path(sys.argv[1]).resolve()
    folders = sources_by_folder(build, sys.argv[2:])
    shutil.rmtree(build / "tidy", ignore_errors=True)
    (build / "tidy").mkdir()
    found = {}

    def examine(unit):
        began = time.monotonic()
        in_tests = unit.sources[0].is_relative_to(ROOT / "tests")
        for path, line, text in unit.examine(*([f"--checks={IN_TESTS}"] if in_tests else [])):
            found[f"{os.path.relpath(path, ROOT)}:{line}: {text}"] = None
        if os.environ.get("TIDY_TIMES"):
            print(f"{time.monotonic() - began:6.1f} s {unit.path.stem}", flush=True)

    with ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
        listed = pool.map(lambda sources: list(units(build, sources)), packed(folders))
        work = [unit for some in listed for unit in some]
        # The longest first, so that the processors end together.
        work.sort(key=lambda unit: unit.path.stat().st_size, reverse=True)
        list(pool.map(examine, work))
    for text in sorted(found):
        print(text)
    files = sum(len(sources) for sources in folders.values())
    print(f"{files} files, {len(found)} findings")
    sys.exit(1 if found or not files else 0)


main()
