#!/usr/bin/python3
"""Times pagestack-convert beside other tools for the same work.

    bench/run.py --bin build/release/bin/pagestack-convert [--runs 3] [--only fax,photo]
                 [--formats jpeg,png] [--keep]

The sources are made by make_corpus.py. The runs of the tools are interleaved; the figures are medians.
A ratio is the tool's wall time divided by pagestack's: above 1 pagestack is faster. --keep writes
RESULTS.md beside this file.
"""
import argparse
import concurrent.futures
import datetime
import os
import platform
import re
import shutil
import statistics
import sys
import tempfile
import time
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE))

from measure import Launcher, scratch_parent  # noqa: E402

# Started before anything large is in memory; see measure.py.
LAUNCHERS = [Launcher(), Launcher()]

from PIL import Image  # noqa: E402

from make_corpus import make_corpus  # noqa: E402
from peers import KEPT_FORMATS, Pagestack, find_peers  # noqa: E402

Image.MAX_IMAGE_PIXELS = None
PARTS = ["## Ratios", "## Each work"]  # of RESULTS.md that come from here
FORMATS = ["jpeg", "png", "tiff_none", "tiff_g4", "tiff_lzw", "split", "bmp", "gif"]


class Measurement:
    """One run of one tool; `failure` says why it does not count."""

    def __init__(self):
        self.wall_s = self.cpu_s = 0.0
        self.peak_bytes = self.output_bytes = 0
        self.failure = ""


def measure(peer, source, pages, format_, scratch):
    result = Measurement()
    out = tempfile.mkdtemp(dir=scratch)
    stages = peer.stages(str(source), pages, format_, out)
    started = time.monotonic()
    for number, stage in enumerate(stages):
        # Two commands at a time: the first launcher takes the even ones, the second the odd ones.
        def share(worker, commands=stage, stage_number=number):
            return [(command, LAUNCHERS[worker].run(
                command, stderr=f"{scratch}/errors-{stage_number}-{worker}", env=peer.environment))
                for command in commands[worker::2]]
        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            outcomes = [pair for part in pool.map(share, (0, 1)) for pair in part]
        for command, outcome in outcomes:
            result.cpu_s += outcome.cpu_s
            result.peak_bytes = max(result.peak_bytes, outcome.peak_bytes)
            if not outcome.succeeded:
                result.failure = f"{Path(command[0]).name} ended with {outcome.exit_code}"
    result.wall_s = time.monotonic() - started
    result.output_bytes = sum(path.stat().st_size for path in Path(out).iterdir())
    result.failure = result.failure or wrong_pages(source, out, pages, format_)
    shutil.rmtree(out)
    return result


def wrong_pages(source, out, pages, format_):
    """What is wrong with the number or size of the pages written; empty when nothing is."""
    files = sorted(Path(out).iterdir())
    with Image.open(source) as original:
        size = original.size
    try:
        if format_ in KEPT_FORMATS:
            if len(files) != 1:
                return f"{len(files)} files"
            with Image.open(files[0]) as kept:
                if kept.n_frames != pages or kept.size != size:
                    return f"{kept.n_frames} pages of {kept.size}"
            return ""
        if len(files) != pages:
            return f"{len(files)} files instead of {pages}"
        for file in files:
            with Image.open(file) as page:
                if page.size != size or getattr(page, "n_frames", 1) != 1:
                    return f"a page of {page.size}"
    except OSError as error:
        return f"unreadable: {error}"
    return ""


def run_cell(peers, source, pages, format_, runs, scratch):
    """{peer: its measurements} with the runs of the peers interleaved."""
    able = [peer for peer in peers if peer.stages(str(source), pages, format_, "x") is not None]
    results = {peer: [] for peer in able}
    for number in range(runs):
        turn = number % len(able)
        for peer in able[turn:] + able[:turn]:
            if not results[peer] or not results[peer][0].failure:
                results[peer].append(measure(peer, source, pages, format_, scratch))
    return results


def median(values):
    return statistics.median(values)


def cell_lines(title, results):
    """The lines of one cell's table, the first peer being pagestack."""
    lines = [f"| {title} | wall s | spread | CPU s | peak MB | output MB | ratio |",
             "| --- | ---: | ---: | ---: | ---: | ---: | ---: |"]
    own = next((runs for peer, runs in results.items() if peer.name == "pagestack"), [])
    own_wall = median([run.wall_s for run in own]) if own and not own[0].failure else None
    for peer, runs in results.items():
        failure = next((run.failure for run in runs if run.failure), "")
        if failure:
            lines.append(f"| {peer.name} | failed: {failure} | | | | | |")
            continue
        walls = [run.wall_s for run in runs]
        wall = median(walls)
        ratio = f"{wall / own_wall:.2f}" if own_wall else "-"
        lines.append(f"| {peer.name} | {wall:.3f} | {(max(walls) - min(walls)) / wall:.0%} "
                     f"| {median([run.cpu_s for run in runs]):.2f} "
                     f"| {max(run.peak_bytes for run in runs) / 1e6:.0f} "
                     f"| {runs[-1].output_bytes / 1e6:.2f} | {ratio} |")
    return lines


def summary_lines(cells):
    """Ratios of all cells in one table."""
    names = sorted({peer.name for results in cells.values() for peer in results} - {"pagestack"})
    lines = ["| work | pagestack s | of the best tool | " + " | ".join(names) + " |",
             "| --- | ---: | ---: |" + " ---: |" * len(names)]
    shares = []
    for title, results in cells.items():
        walls = {peer.name: None if any(run.failure for run in runs)
                 else median([run.wall_s for run in runs]) for peer, runs in results.items()}
        own = walls.get("pagestack")
        cells_text = []
        for name in names:
            if name not in walls:
                cells_text.append("")
            elif walls[name] is None:
                cells_text.append("failed")
            else:
                cells_text.append(f"{walls[name] / own:.2f}" if own else f"{walls[name]:.3f} s")
        own_text = f"{own:.3f}" if own else "failed"
        others = [wall for name, wall in walls.items() if wall and name != "pagestack"]
        share = own / min(others) if own and others else None
        if share:
            shares.append(share)
        share_text = f"{share:.2f}" if share else ""
        lines.append(f"| {title} | {own_text} | {share_text} | " + " | ".join(cells_text) + " |")
    if shares:
        lines.append(f"| geometric mean | | {statistics.geometric_mean(shares):.2f} |"
                     + " |" * len(names))
    return lines


def machine():
    model = platform.machine()
    try:
        with open("/proc/cpuinfo", encoding="ascii", errors="replace") as lines:
            model = next((line.split(":", 1)[1].strip() for line in lines if "model name" in line), model)
    except OSError:
        pass
    return f"{os.cpu_count()} x {model}, {platform.system()}"


def report_lines(cells, peers, absent, runs):
    lines = ["# Benchmark", "",
             f"{datetime.date.today()}, {machine()}; {runs} interleaved runs, medians. Ratio: the tool's "
             "wall time divided by pagestack's, above 1 pagestack is faster. Of the best tool: "
             "pagestack's wall time divided by that of the fastest tool, below 1 pagestack is "
             "faster. Spread: slowest less fastest "
             "run, divided by the median. Peak is that of the largest process. How it is measured: "
             "`bench/README.md`.", ""]
    lines += [f"- {peer.name}: {peer.version}" for peer in peers]
    if absent:
        lines.append(f"- not installed: {', '.join(absent)}")
    lines += ["", PARTS[0], "", *summary_lines(cells), "", PARTS[1], ""]
    for title, results in cells.items():
        lines += [*cell_lines(title, results), ""]
    return lines


def other_parts(results):
    """What RESULTS.md has that does not come from here."""
    parts = re.split(r"^(?=## )", results, flags=re.MULTILINE)[1:]
    return "".join("\n" + part.strip() + "\n" for part in parts if part.splitlines()[0] not in PARTS)


def main(words):
    parser = argparse.ArgumentParser(description="Times pagestack-convert beside other tools.")
    parser.add_argument("--bin", default=str(HERE.parent / "build/release/bin/pagestack-convert"))
    parser.add_argument("--runs", type=int, default=3)
    parser.add_argument("--only", default="fax,scan_gray,photo,photo_lzw", help="sources")
    parser.add_argument("--formats", default=",".join(FORMATS))
    parser.add_argument("--corpus", help="keep the sources in this folder from run to run")
    parser.add_argument("--keep", action="store_true", help="write RESULTS.md")
    arguments = parser.parse_args(words)
    formats = arguments.formats.split(",")
    if set(formats) - set(FORMATS):
        parser.error(f"formats are {', '.join(FORMATS)}")
    if not os.access(arguments.bin, os.X_OK):
        parser.error(f"there is no program at {arguments.bin}")
    cells = {}
    with tempfile.TemporaryDirectory(prefix="bench-", dir=scratch_parent(3 << 30)) as scratch:
        found, absent = find_peers(scratch)
        peers = [Pagestack(arguments.bin), *found]
        if absent:
            print(f"not installed: {', '.join(absent)}")
        for source, pages in make_corpus(Path(arguments.corpus or scratch) / "sources").items():
            if source.stem not in arguments.only.split(","):
                continue
            source.read_bytes()  # from now on it is in the page cache
            for format_ in formats:
                if format_ == "tiff_g4" and source.stem != "fax":
                    continue
                title = f"{source.stem} to {format_}"
                cells[title] = run_cell(peers, source, pages, format_, arguments.runs, scratch)
                print("\n".join(cell_lines(title, cells[title])), flush=True)
    lines = report_lines(cells, peers, absent, arguments.runs)
    print("\n" + "\n".join(summary_lines(cells)))
    if arguments.keep:
        results = HERE / "RESULTS.md"
        kept = other_parts(results.read_text(encoding="utf-8")) if results.exists() else ""
        results.write_text("\n".join(lines) + kept, encoding="utf-8")
    failed = any(run.failure for results in cells.values() for peer, runs in results.items()
                 for run in runs if peer.name == "pagestack")
    return 1 if failed or not cells else 0


if __name__ == "__main__":
    try:
        sys.exit(main(sys.argv[1:]))
    finally:
        for launcher in LAUNCHERS:
            launcher.close()
