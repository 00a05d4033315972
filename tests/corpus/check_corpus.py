#!/usr/bin/python3
"""Runs pagestack-convert over a corpus of real TIFF files and judges what it wrote.

    check_corpus.py --bin build/release/bin/pagestack-convert [--corpus DIR] [--formats png,bmp]
                    [--only 'palette/*'] [--report differences.tsv] [--smoke]

The judges are other people's decoders and readers written for this check; see README.md. The check
passes (exit 0) when every difference found is listed in known-differences.tsv and every difference
listed there was found; 77 means that there is no corpus or that a needed tool is missing.
"""
import argparse
import fnmatch
import functools
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


def skip(why):
    print(f"skipped: {why}")
    sys.exit(77)


try:
    from judge import PageJudge
    from output_readers import READERS
    from picture import DecodeError
    from reference import References
    from tiff_reader import Pages
except ImportError as missing:
    skip(f"{missing} (Debian: python3-numpy python3-pil)")
if not shutil.which("tiffcp"):
    skip("no tiffcp (Debian: libtiff-tools)")

from expected import Difference, read_expected, read_known_differences  # noqa: E402
from measure import Launcher, scratch_parent  # noqa: E402

KEPT = [f"kept-{name}" for name in ("none", "g3", "g4", "lzw", "packbits")]
EXTENSIONS = {"tiff": ".tiff", "png": ".png", "bmp": ".bmp", "gif": ".gif", "jpeg": ".jpg"}
FORMATS = [*EXTENSIONS, *KEPT]
MANY_PAGES = 100  # a file of more is shared out among the workers, a format each
SMOKE_SHARE = 3  # the slow program of a smoke run takes every third format, another third for each file
ALLOWED_EXITS = (0, 1, 3, 4)
SANITIZER_MARKS = ("AddressSanitizer", "LeakSanitizer", "ThreadSanitizer", "runtime error:")


class Run:
    """One run of the program over one file to one format, in a folder of its own."""

    def __init__(self, options, launcher, source, format_, folder):
        self.format, self.folder, errors = format_, Path(folder) / "out", Path(folder) / "errors"
        self.folder.mkdir()
        environment = {"HOME": folder, "XDG_CONFIG_HOME": folder, "XDG_DATA_HOME": folder,
                       "LC_ALL": "C.UTF-8",
                       "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":exitcode=99",
                       "UBSAN_OPTIONS": os.environ.get("UBSAN_OPTIONS", "") + ":print_stacktrace=1"}
        words = ["-f", format_, "--separator", "_"]
        if format_ == "tiff":
            words += ["--split", "--compression", "none"]
        elif format_ in KEPT:
            words = ["-f", "tiff", "--compression", format_[len("kept-"):]]
        command = [options.bin, *words, "-o", self.folder, "--on-exists", "overwrite", "--no-log", "-q",
                   source]
        self.outcome = launcher.run(command, options.time_limit * 3, stderr=errors, env=environment)
        self.errors = errors.read_text(encoding="utf-8", errors="replace")
        self.names = {path.name for path in self.folder.iterdir()}

    def reason(self, mark=""):
        """The first message, of those with the mark if there is one."""
        lines = [line for line in self.errors.splitlines() if line.strip()]
        return next((line for line in lines if mark in line), lines[0] if lines else "no message")

    def troubles(self, options):
        """What no input may cause, as (what, text)."""
        outcome = self.outcome
        if outcome.timed_out:
            yield "time", f"killed after {outcome.wall_s:.0f} s"
        elif outcome.exit_code not in ALLOWED_EXITS:
            yield "crash", f"signal {outcome.signal}, exit code {outcome.exit_code}"
        for mark in SANITIZER_MARKS:
            if mark in self.errors:
                yield "sanitizer", self.reason(mark)
        # Others may use the machine as well: a long wait without work is not the program's.
        if not outcome.timed_out and outcome.wall_s > options.time_limit < 2 * outcome.cpu_s:
            yield "time", f"{outcome.wall_s:.1f} s"
        # An instrumented program needs several times the memory.
        if not options.smoke and outcome.peak_bytes > options.memory_limit << 20:
            yield "memory", f"{outcome.peak_bytes >> 20} MB"
        if outcome.exit_code not in (0, None) and not self.errors.strip():
            yield "silent", f"exit code {outcome.exit_code} without a message"


class FileCheck:
    """Converts one file to several formats and judges every page; travels back from its worker."""

    def __init__(self, options, file):
        self.options, self.file, self.source = options, file, Path(options.corpus) / file.path
        self.differences, self.judges, self.references = [], {}, None
        self.refused = set()  # pages that split TIFF output could not give

    def add(self, run, page, *found):
        self.differences += [Difference(self.file.path, page, run.format, *what) for what in found]

    def check(self, format_, launcher):
        with tempfile.TemporaryDirectory(dir=self.options.scratch) as folder:
            run = Run(self.options, launcher, self.source, format_, folder)
            self.add(run, 0, *run.troubles(self.options))
            if not self.options.smoke:
                self._check_outputs(run, folder)

    def _check_outputs(self, run, folder):
        verdict, code = self.file.verdict, run.outcome.exit_code
        if verdict not in ("good", "damaged"):
            if run.names:
                self.add(run, 0, ("leftover", ", ".join(sorted(run.names)[:3])))
            elif code == 0 and not verdict.startswith("pdf"):
                self.add(run, 0, ("silent", "exit code 0 for a file that cannot be read"))
            return
        outputs = (self._kept_pages if run.format in KEPT else self._single_pages)(run, folder)
        if run.format == "tiff":
            self.refused = {page.number for page in self.file.pages} - set(outputs)
        for page in self.file.pages:
            if page.number in outputs:
                self._check_page(run, page, outputs[page.number])
            elif verdict == "good":
                self.add(run, page.number, ("missing", run.reason(f"[{page.number}]")))
        written, wanted = len(outputs), self.file.page_total
        if code == 0 and written < wanted:
            self.add(run, 0, ("silent", f"exit code 0 with {written} of {wanted} pages"))
        if verdict == "good" and code == 1 and written >= wanted:
            self.add(run, 0, ("exit", f"exit code 1: {run.reason()}"))

    def _single_pages(self, run, folder):
        """What reads each page that was written as a file of its own, by page number."""
        stem, extension = self.file.stem.replace(":", "-"), EXTENSIONS[run.format]
        names = {f"{stem}_{page.number}{extension}": page.number for page in self.file.pages}
        self._tell_strangers(run, names)

        def read(path):
            if run.format != "tiff":
                return READERS[run.format](path)
            pages = Pages(path, folder)
            return pages.page(0) if len(pages) == 1 else DecodeError(f"{len(pages)} pages in one file")
        return {number: functools.partial(read, run.folder / name) for name, number in names.items()
                if name in run.names}

    def _kept_pages(self, run, folder):
        """What reads each page of the one file that was written, by page number."""
        name = self.file.stem + ".tiff"
        self._tell_strangers(run, [name])
        if name not in run.names:
            return {}
        try:
            pages = Pages(run.folder / name, folder)
        except DecodeError as error:
            self.add(run, 0, ("undecodable", str(error)))
            return {}
        numbers = [page.number for page in self.file.pages]
        if len(pages) != len(numbers):
            numbers = [number for number in numbers if number not in self.refused]
        if len(pages) != len(numbers):
            self.add(run, 0, ("pages", f"{len(pages)} pages instead of {len(numbers)}"))
        return {number: functools.partial(pages.page, index)
                for index, number in enumerate(numbers[:len(pages)])}

    def _tell_strangers(self, run, names):
        if strangers := run.names.difference(names):
            self.add(run, 0, ("names", ", ".join(sorted(strangers)[:3])))

    def _check_page(self, run, page, read):
        """Only pages of good files are held to more than that they can be read."""
        try:
            picture = read()
            if isinstance(picture, DecodeError):
                raise picture
            if self.file.verdict == "good":
                self.add(run, page.number, *self._judge_of(page).judged(picture, run.format))
        except DecodeError as error:
            self.add(run, page.number, ("undecodable", str(error)))

    def _judge_of(self, page):
        if page.number not in self.judges:
            self.references = self.references or References(self.source, self.options.scratch)
            # A page is judged format by format; of long files only the last page is remembered.
            if len(self.file.pages) > MANY_PAGES:
                self.judges.clear()
            profile = self.references.source_profile(page)
            self.judges[page.number] = PageJudge(page, self.references.of(page), profile)
        return self.judges[page.number]


@functools.cache
def launcher_of_worker():
    return Launcher()


def check_one(task):
    options, file, formats = task
    check = FileCheck(options, file)
    for format_ in formats:
        check.check(format_, launcher_of_worker())
    check.judges = check.references = None
    return check


def tasks_of(options, files):
    """The largest pieces of work first, so that no worker is left alone with one at the end."""
    tasks = []
    step = SMOKE_SHARE if options.smoke else 1
    for number, file in enumerate(files):
        is_long = file.page_total > MANY_PAGES and file.verdict == "good"
        formats = options.formats[number % step::step]
        shares = [[name] for name in formats] if is_long else [formats]
        pixels = sum(min(page.width * page.height, 1 << 28) + 20_000 for page in file.pages)
        tasks += [(pixels * len(share), options, file, share) for share in shares]
    return [task[1:] for task in sorted(tasks, key=lambda task: task[0], reverse=True)]


def parsed_arguments(words):
    parser = argparse.ArgumentParser(description="Judges pagestack-convert over a corpus.")
    parser.add_argument("--bin", help="the pagestack-convert to run", required=True)
    parser.add_argument("--corpus", default=str(SOURCE_DIR.parent / "shared" / "corpus"))
    parser.add_argument("--known", default=str(HERE / "known-differences.tsv"))
    parser.add_argument("--formats", default=",".join(FORMATS), help="of " + ", ".join(FORMATS))
    parser.add_argument("--only", default="*", help="files whose name in the corpus matches")
    parser.add_argument("--report", help="write all differences to this file, tab-separated")
    parser.add_argument("--smoke", action="store_true", help="look at crashes and time only")
    parser.add_argument("--time-limit", type=float, default=10, help="seconds a run")
    parser.add_argument("--memory-limit", type=int, default=300, help="megabytes a run")
    options = parser.parse_args(words)
    options.formats = [name for name in FORMATS if name in options.formats.split(",")]
    if not options.formats or not os.access(options.bin, os.X_OK):
        parser.error(f"there is no program at {options.bin}, or no such format")
    return options


def main(words):
    options, started = parsed_arguments(words), time.monotonic()
    if not (Path(options.corpus) / "EXPECTED.tsv").exists():
        skip(f"no corpus at {options.corpus}")
    known, files = read_known_differences(options.known), read_expected(options.corpus)
    files = [file for file in files if fnmatch.fnmatchcase(file.path, options.only)]
    if not files:
        sys.exit(f"no file matches {options.only}")
    with tempfile.TemporaryDirectory(prefix="corpus-", dir=scratch_parent(4 << 30)) as scratch:
        options.scratch = scratch
        with multiprocessing.Pool() as pool:
            checks = list(pool.imap_unordered(check_one, tasks_of(options, files)))
    found = sorted(difference for check in checks for difference in check.differences)
    entries = [difference.entry(known) for difference in found]
    fresh = [difference for difference, entry in zip(found, entries) if entry is None]
    is_whole = options.only == "*" and options.formats == FORMATS and not options.smoke
    stale = set(known).difference(entries) if is_whole else set()
    if options.report:
        rows = [("file", "page", "format", "what", "text", "known")]
        rows += [(*difference, known.get(entry, "")) for difference, entry in zip(found, entries)]
        lines = ("\t".join(" ".join(str(field).split()) for field in row) + "\n" for row in rows)
        Path(options.report).write_text("".join(lines), encoding="utf-8")
    for difference in fresh[:200]:
        print("new: {0}[{1}] {2} {3}: {4}".format(*difference))
    for entry in stale:
        print(f"listed as known, but not found any more: {entry}")
    print(f"{len(files)} files, {len(fresh)} new differences, {len(found) - len(fresh)} known, {len(stale)} stale, "
          f"{time.monotonic() - started:.0f} s")
    return 1 if fresh or stale else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
