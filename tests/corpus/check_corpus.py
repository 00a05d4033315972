#!/usr/bin/python3
"""Runs pagestack-convert over a corpus of real TIFF files and judges what it wrote.

    check_corpus.py --bin build/release/bin/pagestack-convert [--corpus DIR] [--formats png,bmp]
                    [--only 'palette/*'] [--jobs 2] [--report differences.tsv] [--smoke]

The judges are other people's decoders and readers written for this check; see README.md. The check
passes (exit 0) when every difference found is listed in known-differences.tsv and every difference
listed there was found; 77 means that there is no corpus or that a needed tool is missing.
"""
import argparse
import fnmatch
import multiprocessing
import os
import shutil
import sys
import tempfile
import time
from pathlib import Path

HERE = Path(__file__).resolve().parent
SOURCE_DIR = HERE.parent.parent
sys.path[:0] = [str(HERE), str(SOURCE_DIR / "bench")]

SKIPPED = 77
try:
    import numpy  # noqa: F401
    import PIL  # noqa: F401
except ImportError as missing:
    print(f"skipped: {missing} (Debian: python3-numpy python3-pil)")
    sys.exit(SKIPPED)

from expected import Difference, read_expected, read_known_differences  # noqa: E402
from judge import PageJudge  # noqa: E402
from measure import Launcher, scratch_parent  # noqa: E402
from output_readers import read_bmp, read_gif, read_jpeg, read_png  # noqa: E402
from picture import DecodeError  # noqa: E402
from reference import References  # noqa: E402
from tiff_reader import Pages  # noqa: E402

KEPT = [f"kept-{name}" for name in ("none", "g3", "g4", "lzw", "packbits")]
FORMATS = ["tiff", "png", "bmp", "gif", "jpeg", *KEPT]
EXTENSIONS = {"png": ".png", "tiff": ".tiff", "bmp": ".bmp", "gif": ".gif", "jpeg": ".jpg"}
READERS = {"png": read_png, "bmp": read_bmp, "gif": read_gif, "jpeg": read_jpeg}
MANY_PAGES = 100  # a file of more is shared out among the workers, a format each
ALLOWED_EXITS = (0, 1, 3, 4)
SANITIZER_MARKS = ("AddressSanitizer", "LeakSanitizer", "ThreadSanitizer", "runtime error:")


class Run:
    """One run of the program over one file to one format, in a folder of its own."""

    def __init__(self, options, launcher, source, format_, folder):
        self.format, self.folder, errors = format_, Path(folder) / "out", Path(folder) / "errors"
        self.folder.mkdir()
        environment = {"HOME": folder, "XDG_CONFIG_HOME": folder, "XDG_DATA_HOME": folder, "LC_ALL": "C.UTF-8",
                       "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":exitcode=99",
                       "UBSAN_OPTIONS": os.environ.get("UBSAN_OPTIONS", "") + ":print_stacktrace=1"}
        command = [options.bin, *self._options(), "-o", self.folder, "--on-exists", "overwrite", "--no-log",
                   "-q", source]
        self.outcome = launcher.run(command, options.time_limit * 3, stderr=errors, env=environment)
        self.errors = errors.read_text(encoding="utf-8", errors="replace")
        self.names = sorted(path.name for path in self.folder.iterdir())

    def _options(self):
        if self.format.startswith("kept-"):
            return ["-f", "tiff", "--compression", self.format[len("kept-"):]]
        options = ["-f", self.format, "--separator", "_"]
        return options + ["--split", "--compression", "none"] if self.format == "tiff" else options

    def reason(self, mark=""):
        """The first message, of those with the mark if there is one."""
        lines = [line for line in self.errors.splitlines() if line.strip()]
        return next((line for line in lines if mark in line), lines[0] if lines else "no message")

    def troubles(self, options):
        """What no input may cause, as (what, text)."""
        outcome, found = self.outcome, []
        if outcome.timed_out:
            found.append(("time", f"killed after {outcome.wall_s:.0f} s"))
        elif outcome.signal:
            found.append(("crash", f"signal {outcome.signal}"))
        elif outcome.exit_code not in ALLOWED_EXITS:
            found.append(("crash", f"exit code {outcome.exit_code}"))
        if any(mark in self.errors for mark in SANITIZER_MARKS):
            found.append(("sanitizer", self.reason(next(filter(self.errors.__contains__, SANITIZER_MARKS)))))
        # Others may use the machine as well: a long wait without work is not the program's.
        if not outcome.timed_out and outcome.wall_s > options.time_limit < 2 * outcome.cpu_s:
            found.append(("time", f"{outcome.wall_s:.1f} s"))
        # An instrumented program needs several times the memory.
        if not options.smoke and outcome.peak_bytes > options.memory_limit << 20:
            found.append(("memory", f"{outcome.peak_bytes >> 20} MB"))
        if outcome.exit_code not in (0, None) and not self.errors.strip():
            found.append(("silent", f"exit code {outcome.exit_code} without a message"))
        return found


class FileReport:
    """What came of one file; travels from the worker to the report."""

    def __init__(self, file):
        self.file, self.verdict = file.path, file.verdict
        self.differences = []
        self.pages_wanted = self.pages_written = self.largest_bytes = 0
        self.unjudged = set()  # pages whose pixels nothing could be held against
        self.slowest_s = 0.0

    def add(self, page, format_, *found):
        self.differences += [Difference(self.file, page, format_, what, text) for what, text in found]

    def merge(self, other):
        self.differences += other.differences
        self.pages_wanted += other.pages_wanted
        self.pages_written += other.pages_written
        self.unjudged |= other.unjudged
        self.slowest_s = max(self.slowest_s, other.slowest_s)
        self.largest_bytes = max(self.largest_bytes, other.largest_bytes)


class FileCheck:
    """Converts one file to several formats and judges every page."""

    def __init__(self, options, file, launcher):
        self.options, self.file, self.launcher = options, file, launcher
        self.source = Path(options.corpus) / file.path
        self.report, self.judges, self.references = FileReport(file), {}, None
        self.refused = {}  # pages that split TIFF output could not give, with the reason

    def check(self, formats):
        for format_ in sorted(formats, key=FORMATS.index):
            with tempfile.TemporaryDirectory(dir=self.options.scratch) as folder:
                self._check_format(format_, folder)
        return self.report

    def _check_format(self, format_, folder):
        run = Run(self.options, self.launcher, self.source, format_, folder)
        report, verdict = self.report, self.file.verdict
        report.slowest_s = max(report.slowest_s, run.outcome.wall_s)
        report.largest_bytes = max(report.largest_bytes, run.outcome.peak_bytes)
        report.add(0, format_, *run.troubles(self.options))
        if self.options.smoke:
            return
        if verdict in ("good", "damaged"):
            written = (self._kept_pages if format_ in KEPT else self._single_pages)(run, folder)
            wanted = self.file.page_total
            report.pages_wanted += wanted
            report.pages_written += written
            if run.outcome.exit_code == 0 and written < wanted:
                report.add(0, format_, ("silent", f"exit code 0 with {written} of {wanted} pages"))
            if verdict == "good" and run.outcome.exit_code == 1 and written >= wanted:
                report.add(0, format_, ("exit", f"exit code 1: {run.reason()}"))
        elif run.names:
            report.add(0, format_, ("leftover", ", ".join(run.names[:3])))
        elif run.outcome.exit_code == 0 and not verdict.startswith("pdf"):
            report.add(0, format_, ("silent", "exit code 0 for a file that cannot be read"))

    def _judge(self, page):
        judge = self.judges.get(page.number)
        if judge is None:
            self.references = self.references or References(self.source, self.options.scratch)
            reference = self.references.of(page)
            judge = PageJudge(page, reference, self.references.source_profile(page))
            # A page is judged format by format; of long files only the last page is remembered.
            if len(self.file.pages) > MANY_PAGES:
                self.judges.clear()
            self.judges[page.number] = judge
            if reference.form is None and not page.pixels.startswith("sha256"):
                self.report.unjudged.add(page.number)
        return judge

    def _judged(self, run, page, read, compression):
        """Only pages of good files are held to more than that they can be read."""
        try:
            picture = read()
            if isinstance(picture, DecodeError):
                raise picture
            if self.file.verdict == "good":
                judge = self._judge(page)
                self.report.add(page.number, run.format, *(
                    judge.tiff(picture, compression) if compression else getattr(judge, run.format)(picture)))
        except DecodeError as error:
            self.report.add(page.number, run.format, ("undecodable", str(error)))

    def _absent(self, page, run, reason=None):
        if self.file.verdict == "good":
            self.report.add(page.number, run.format, ("missing", reason or run.reason(f"[{page.number}]")))

    def _strangers(self, run, names):
        strangers = [name for name in run.names if name not in names]
        if strangers:
            self.report.add(0, run.format, ("names", ", ".join(strangers[:3])))
        return len(strangers)

    def _single_pages(self, run, folder):
        is_tiff = run.format == "tiff"
        names = {f"{self.file.stem}_{page.number}{EXTENSIONS[run.format]}".replace(":", "-"): page
                 for page in self.file.pages}

        def read(path):
            if not is_tiff:
                return READERS[run.format](path)
            pages = Pages(path, folder)
            return pages.page(0) if len(pages) == 1 else DecodeError(f"{len(pages)} pages in one file")

        for name, page in names.items():
            if name in run.names:
                self._judged(run, page, lambda name=name: read(run.folder / name), "none" if is_tiff else None)
                continue
            if is_tiff:
                self.refused[page.number] = run.reason(f"[{page.number}]")
            self._absent(page, run)
        return len(run.names) - self._strangers(run, names)

    def _kept_pages(self, run, folder):
        name = self.file.stem + ".tiff"
        self._strangers(run, [name])
        if name not in run.names:
            for page in self.file.pages:
                self._absent(page, run)
            return 0
        try:
            pages = Pages(run.folder / name, folder)
        except DecodeError as error:
            self.report.add(0, run.format, ("undecodable", str(error)))
            return 0
        wanted = self.file.pages
        if len(pages) != len(wanted):
            wanted = [page for page in self.file.pages if page.number not in self.refused]
            for number, reason in self.refused.items():
                self._absent(self.file.pages[number - 1], run, reason)
        if len(pages) != len(wanted):
            self.report.add(0, run.format, ("pages", f"{len(pages)} pages instead of {len(wanted)}"))
        for index, page in enumerate(wanted[:len(pages)]):
            self._judged(run, page, lambda index=index: pages.page(index), run.format[len("kept-"):])
        return min(len(pages), len(wanted))


# Running ----------------------------------------------------------------------------------------

_worker = None


def _prepare_worker(options):
    global _worker
    _worker = options, Launcher()


def _check_one(task):
    file, formats = task
    options, launcher = _worker
    return FileCheck(options, file, launcher).check(formats)


def tasks_of(files, formats, smoke):
    """The largest pieces of work first, so that no worker is left alone with one at the end."""
    tasks = []
    for file in files:
        is_long = file.page_total > MANY_PAGES and file.verdict == "good" and not smoke
        tasks += [(file, [name]) for name in formats] if is_long else [(file, formats)]

    def weight(task):
        file, names = task
        return sum(20_000 + page.width * page.height for page in file.pages
                   if page.width * page.height < 1 << 28) * len(names)
    return sorted(tasks, key=weight, reverse=True)


def merged(reports):
    """One report a file, in the order of their names."""
    result = {}
    for report in reports:
        first = result.setdefault(report.file, report)
        if first is not report:
            first.merge(report)
    return [result[name] for name in sorted(result)]


def sort_out(reports, known):
    """Splits all differences into new ones and (difference, entry) pairs."""
    fresh, understood = [], []
    for report in reports:
        for difference in report.differences:
            entries = [entry for entry in known if entry.covers(difference)]
            for entry in entries:
                entry.used = True
            if entries:
                understood.append((difference, entries[0]))
            else:
                fresh.append(difference)
    return fresh, understood


# Telling ----------------------------------------------------------------------------------------


def print_some(title, differences):
    """The first three of each file, format and kind, and how many more there are."""
    print(f"\n{title} differences: {len(differences)}")
    groups = {}
    for d in differences:
        groups.setdefault((d.file, d.format, d.what), []).append(d)
    for group, members in groups.items():
        print("\n".join(f"  {d}" for d in members[:3]))
        if len(members) > 3:
            print(f"  {' '.join(group)}: and {len(members) - 3} more")


def print_summary(reports):
    for verdict in sorted({report.verdict for report in reports}):
        group = [report for report in reports if report.verdict == verdict]
        print(f"{verdict}: {len(group)} files, {sum(r.pages_written for r in group)} of "
              f"{sum(r.pages_wanted for r in group)} pages written, at most {max(r.slowest_s for r in group):.1f} s "
              f"and {max(r.largest_bytes for r in group) >> 20} MB")
    unjudged = {report.file: sorted(report.unjudged) for report in reports if report.unjudged}
    print("Pixels without anything to judge them by (size, depth and the rest are checked): "
          + ", ".join(f"{file}{pages}" for file, pages in unjudged.items()))


def write_table(path, fresh, understood):
    with open(path, "w", encoding="utf-8") as table:
        table.write("file\tpage\tformat\twhat\ttext\tknown\n")
        rows = [(d, "") for d in fresh] + [(d, entry.reason) for d, entry in understood]
        for d, reason in rows:
            text = d.text.replace("\t", " ").replace("\n", " ")
            table.write(f"{d.file}\t{d.page}\t{d.format}\t{d.what}\t{text}\t{reason}\n")


def parsed_arguments(words):
    parser = argparse.ArgumentParser(description="Judges pagestack-convert over a corpus.")
    parser.add_argument("--bin", help="the pagestack-convert to run")
    parser.add_argument("--corpus", default=str(SOURCE_DIR.parent / "shared" / "corpus"))
    parser.add_argument("--known", default=str(HERE / "known-differences.tsv"))
    parser.add_argument("--formats", default=",".join(FORMATS), help="of " + ", ".join(FORMATS))
    parser.add_argument("--only", default="*", help="files whose name in the corpus matches")
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 1)
    parser.add_argument("--report", help="write all differences to this file, tab-separated")
    parser.add_argument("--smoke", action="store_true",
                        help="look at crashes and time only (instrumented builds)")
    parser.add_argument("--time-limit", type=float, default=10, help="seconds a run")
    parser.add_argument("--memory-limit", type=int, default=300, help="megabytes a run")
    parser.add_argument("--self-test", action="store_true", help="test the judges themselves")
    arguments = parser.parse_args(words)
    arguments.formats = [name for name in arguments.formats.split(",") if name]
    unknown = set(arguments.formats) - set(FORMATS)
    if unknown:
        parser.error(f"unknown format {', '.join(sorted(unknown))}")
    if not arguments.bin and not arguments.self_test:
        parser.error("--bin is wanted")
    return arguments


def main(words):
    arguments = parsed_arguments(words)
    if not shutil.which("tiffcp"):
        print("skipped: no tiffcp (Debian: libtiff-tools)")
        return SKIPPED
    if arguments.self_test:
        import self_test
        return self_test.main()
    if not (Path(arguments.corpus) / "EXPECTED.tsv").exists():
        print(f"skipped: no corpus at {arguments.corpus}")
        return SKIPPED
    if not os.access(arguments.bin, os.X_OK):
        print(f"there is no program at {arguments.bin}")
        return 2
    started = time.monotonic()
    known = read_known_differences(arguments.known)
    files = [file for file in read_expected(arguments.corpus)
             if fnmatch.fnmatchcase(file.path, arguments.only)]
    with tempfile.TemporaryDirectory(prefix="corpus-", dir=scratch_parent(4 << 30)) as scratch:
        arguments.scratch = scratch
        with multiprocessing.Pool(arguments.jobs, _prepare_worker, (arguments,)) as pool:
            tasks = tasks_of(files, arguments.formats, arguments.smoke)
            reports = merged(pool.imap_unordered(_check_one, tasks))
    if not reports:
        print(f"no file matches {arguments.only}")
        return 2
    fresh, understood = sort_out(reports, known)
    stale = [entry for entry in known if not entry.used and not arguments.smoke
             and entry.may_occur([file.path for file in files], arguments.formats)]
    if arguments.report:
        write_table(arguments.report, fresh, understood)
    print_some("Known", [d for d, _ in understood])
    print_some("New", fresh)
    if stale:
        print("\nListed as known, but not found any more:")
        for entry in stale:
            print(f"  {entry}")
    print_summary(reports)
    print(f"\n{len(files)} files, {len(fresh)} new differences, {len(understood)} known, "
          f"{len(stale)} stale entries, {time.monotonic() - started:.0f} s")
    return 1 if fresh or stale else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
